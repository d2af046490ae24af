#pragma once

#include <QString>

// An advisory lock on a lock file, held for as long as the object lives: every program that
// takes the same lock file (the instrument, the batch tool, a second batch sharing the card)
// waits for the others, and so does every thread, since each lock opens the file anew.
class FileLock {
public:
    // Creates the lock file when missing and waits for the lock.
    explicit FileLock(const QString& lockFile);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // False when the lock file could not be opened or locked (a read-only card); error() says
    // why.
    bool locked() const { return fd_ >= 0; }
    const QString& error() const { return error_; }

private:
    int fd_ = -1;
    QString error_;
};
