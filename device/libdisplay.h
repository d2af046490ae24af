#pragma once

// The display layer: the video output at "/dev/video1" that puts the live picture on the LCD
// without the widget toolkit, as packed UYVY pictures scaled by the output hardware into a
// window on the LCD.
//
// Module state for the one output device of the process, used by the capture thread only.
// Functions return 0, or -1 after printing what failed.

// The picture's size and the window's top edge on the LCD, set by the program before it opens
// the output device (the settings screens use 480 x 480 at 254 or 236).
extern int VIDEO_WIDTH;       // 240
extern int VIDEO_HEIGHT;      // 240
extern int VIDEO2LCD_OFFSET;  // 0

// One output buffer as mapped into the process.
struct display_buffer_info {
    unsigned index;
    unsigned length;
    void* start;  // null when not mapped
};

// Output buffers the module holds.
constexpr unsigned kDisplayBuffers = 2;

// Opens "/dev/video1" for VIDEO_WIDTH x VIDEO_HEIGHT UYVY pictures in a window at
// VIDEO2LCD_OFFSET, maps its buffers, makes each a black picture and queues them. Two failures
// end the process (the output would stay unusable); after the others the device may stay
// open, and release_display_device() closes it.
int init_display_device();
int start_display();
int stop_display();
// Takes back a buffer the display has shown: *picture is its mapping, until
// release_disp_frame() queues it to be shown.
int get_disp_frame(void** picture);
int release_disp_frame();
int release_display_device();
