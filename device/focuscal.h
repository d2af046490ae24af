#pragma once

// The instrument's focus measure: the mean weighted absolute gray-level difference between each
// pixel and its eight neighbours `step` pixels away (diagonal neighbours weighted 1.41). A
// sharp end face has strong differences at the cladding's edge and in the ceramic's grain; a
// blurred one has few. The autofocus, the sharpness bar and the fiber-change watch all use it.
namespace MathCal {

class FocusCal {
public:
    // The measure over the whole 8-bit image (stride = width) for neighbours `step` pixels away:
    // the sum over every pixel with all eight neighbours inside the image, divided by the number
    // of those pixels. NaN when no pixel has them (step not below height - step).
    double GetGDSingle(unsigned char* image, int width, int height, int step);

    // GetGDSingle with step 2, the form the instrument uses.
    double GetAllGDEndface(unsigned char* image, int width, int height);
};

}  // namespace MathCal
