#pragma once

#include <QByteArray>
#include <QString>

// Reads a whole file of at most maxBytes. Only regular files are read: a FIFO or a device
// would block the tool for ever or never end, so they are refused without waiting for them.
// Returns false with a one-line reason in error ("no such file", "is a folder", "not a
// regular file", "larger than N bytes", or the system's reason).
bool readRegularFile(const QString& path, qint64 maxBytes, QByteArray& bytes, QString& error);
