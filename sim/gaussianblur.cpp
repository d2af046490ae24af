#include "gaussianblur.h"

#include <cmath>
#include <vector>

namespace sim {

namespace {

std::vector<float> gaussianKernel(double sigma) {
    const int reach = blurReach(sigma);
    std::vector<float> kernel(2 * reach + 1, 1.0f);
    if (reach == 0) {
        return kernel;
    }
    double sum = 0.0;
    std::vector<double> weights(kernel.size());
    for (int k = -reach; k <= reach; ++k) {
        weights[k + reach] = std::exp(-0.5 * k * k / (sigma * sigma));
        sum += weights[k + reach];
    }
    for (size_t k = 0; k < kernel.size(); ++k) {
        kernel[k] = float(weights[k] / sum);
    }
    return kernel;
}

// out[i] = sum over k of kernel[k] * in[i + k * step], for width outputs. The loop over k is
// the outer one so that the inner one runs along memory and vectorises; the order of the sum
// is the same for every i.
void convolveLine(const float* in, size_t step, const std::vector<float>& kernel, int width,
                  float* out) {
    for (int i = 0; i < width; ++i) {
        out[i] = 0.0f;
    }
    for (size_t k = 0; k < kernel.size(); ++k) {
        const float w = kernel[k];
        const float* source = in + k * step;
        for (int i = 0; i < width; ++i) {
            out[i] += w * source[i];
        }
    }
}

}  // namespace

int blurReach(double sigma) {
    return int(std::ceil(4.0 * sigma));
}

void gaussianBlur(const Canvas& sharp, double sigma, Canvas& blurred) {
    const std::vector<float> kernel = gaussianKernel(sigma);
    const int reach = blurReach(sigma);
    const int firstColumn = blurred.left - reach - sharp.left;
    const int firstRow = blurred.top - reach - sharp.top;

    // Along rows first, for every sharp row the column pass needs.
    Canvas across(blurred.left, blurred.top - reach, blurred.width, blurred.height + 2 * reach);
    for (int j = 0; j < across.height; ++j) {
        convolveLine(sharp.row(firstRow + j) + firstColumn, 1, kernel, across.width, across.row(j));
    }
    for (int j = 0; j < blurred.height; ++j) {
        convolveLine(across.row(j), size_t(across.width), kernel, blurred.width, blurred.row(j));
    }
}

}  // namespace sim
