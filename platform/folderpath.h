#pragma once

#include <QString>

// Creates the folder and every missing folder above it, as "mkdir -p" does; a folder that is
// already there is fine, also when another program creates it at the same moment. False when
// one cannot be created, with `error` (may be null) naming it and the system's reason
// ("cannot create folder /x/Report: Read-only file system").
bool makeFolderPath(const QString& path, QString* error = nullptr);
