#pragma once

#include <QString>

// Whether a connector id can name its report file ("<id>_EN.xlsx") on the SD card's FAT file
// system and on any computer the card is read on. Refused:
// - an empty name, and one whose report file name would pass 255 UTF-16 units (so at most
//   247 units for the id);
// - control characters and the characters FAT refuses: < > : " / \ | ? * (so no path
//   separators, and no ".." can climb out of the folder);
// - a trailing dot or space, which FAT drops ("." and ".." included);
// - the reserved device names CON, PRN, AUX, NUL, COM1 to COM9 and LPT1 to LPT9, in any case
//   and with or without an extension ("con", "Nul.txt");
// - text that is not valid UTF-16 (a lone surrogate cannot become a file name).
bool isValidFileName(const QString& name);
