#pragma once

#include <QString>

// A small, nearly full SD card for as long as the object lives: a tmpfs of the given size
// mounted on the folder. active() is false when the mount was refused (not root, or no right
// to mount here); the test should then skip.
class SmallCard {
public:
    SmallCard(const QString& path, int kilobytes);
    ~SmallCard();
    SmallCard(const SmallCard&) = delete;
    SmallCard& operator=(const SmallCard&) = delete;

    bool active() const { return mounted_; }

    // Takes up every free byte with a filler file, as photos and old results do on a real card.
    void fill() const;

private:
    QString path_;
    bool mounted_ = false;
};
