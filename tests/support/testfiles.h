#pragma once

#include <QByteArray>
#include <QString>

// A file's bytes ("" when it cannot be read), and writing them whole.
QByteArray fileContents(const QString& path);
bool writeFile(const QString& path, const QByteArray& bytes);
