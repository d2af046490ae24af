#pragma once

#include <QString>

// Fills 16 bytes with a random version-4 UUID (RFC 4122 variant).
void createGuuid(unsigned char bytes[16]);

// A fresh version-4 UUID as 36 lower-case characters, 8-4-4-4-12.
QString createUUID();
