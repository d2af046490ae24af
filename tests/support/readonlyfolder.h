#pragma once

#include <QString>

// Makes a folder read-only for as long as the object lives, as a write-protected card is. As
// root, permissions do not stop a write, so the folder is bind-mounted read-only onto itself;
// otherwise its permission bits are cleared. active() is false when neither worked (the test
// should then skip).
class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(const QString& path);
    ~ReadOnlyFolder();
    ReadOnlyFolder(const ReadOnlyFolder&) = delete;
    ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

    bool active() const { return mounted_ || chmodded_; }

private:
    QString path_;
    bool mounted_ = false;
    bool chmodded_ = false;
};
