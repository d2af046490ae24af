#pragma once

// The LCD backlight is set with the board command "lcdbrightness LEVEL", where a lower level is
// a brighter screen.

// The backlight level for an ambient illuminance (lux) from the table of 80 levels, 50 lux
// apart: 80 in the dark down to 1 in bright light. Readings of 4000 and above take the last
// entry.
int brightnessLevelForIlluminance(int illuminance);

// Runs "lcdbrightness LEVEL" and returns the command's exit status (-1: it could not run).
int setLcdBrightness(int level);

// The user's brightness from 0 to 100 (higher is brighter) as the level 100 - brightness;
// values outside that range count as their nearest end.
int setUserBrightness(int brightness);
