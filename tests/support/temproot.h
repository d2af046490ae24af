#pragma once

#include <QString>
#include <QTemporaryDir>

// A fresh platform root for one test: LUMASPECTER_ROOT points into a temporary folder that
// is removed afterwards, so nothing a test does can reach the host's own files.
class TempRoot {
public:
    TempRoot();
    ~TempRoot();
    TempRoot(const TempRoot&) = delete;
    TempRoot& operator=(const TempRoot&) = delete;

    QString path() const { return dir_.path(); }
    // "<root>/<relative>"
    QString file(const QString& relative) const;

private:
    QTemporaryDir dir_;
    QByteArray previousRoot_;
};
