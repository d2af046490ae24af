#pragma once

#include <cstdint>

// The focus motor's driver: the stepper driver chip on the SPI bus at "/dev/spidev3.0", spoken
// to in 16-bit command words (module state: one bus, one motor).
//
// A move is a set-up word (drive current, step mode, speed), the word 0x5020, one step word per
// step and the word 0x8A40 that ends it. Before each step the limit switch in the direction of
// travel is read (dump_switch_stat, libhwctl.h); a closed switch ends the move.

// Opens the bus and sets SPI mode 3, 16 bits per word and 400 kHz, reading each back. Any
// failure prints the request's message with the system's error text and aborts the process:
// without its motor the instrument cannot focus. Returns 0.
int init_spi_moto();

// Closes the bus (the motor thread's end); -1 when it was not open.
int release_spi_moto();

// Sends one command word; a failed transfer is reported ("SPI_IOC_MESSAGE") and returns -1,
// and a move goes on after it.
int spi_moto_regwrite(uint16_t word);

// Moves `steps` steps in direction `dir` (+1 or -1). `stepMode` 0..3 gives 16, 8, 4 or 1
// microsteps a step; `drive` 0, 1, 3 or other the set-up word's base; `variant` 0..3 the step
// word's base; `speedCode` 1..7 the time per step unit (32 to 64 us, else 24 us) and
// `speedFactor` how many of those the pause after each step lasts. Returns 0 when the steps are
// made or the stop flag ended the move, -1 when the bus is not open, the direction is neither
// +1 nor -1, or a limit switch is closed.
int run_spi_moto(uint32_t steps, uint16_t stepMode, uint16_t drive, uint16_t variant,
                 uint16_t speedCode, int16_t dir, uint16_t speedFactor);

// Sets (1) or clears (0) the stop flag, read by a move between its steps.
void stop_spi_moto(int flag);

// Step words the last run_spi_moto sent: how far the motor really went when a limit switch or
// the stop flag ended the move early.
uint32_t spi_moto_steps_run();
