#pragma once

#include <QByteArray>
#include <QString>

// Replaces the file's contents as one step: the bytes go to a temporary file in the same
// folder, which is then renamed over the old file. A crash or power cut during the write
// leaves either the old file or the new one, never a mixture. The new contents have reached
// the medium before the rename, so the caller's "sync" only settles the folder.
// Returns false, leaving the old file as it was, when any step fails (a full or read-only
// card, a name too long for the file system); `error` (may be null) then says which step and
// why, in the system's words ("cannot write /x: No space left on device").
bool writeFileAtomically(const QString& path, const QByteArray& bytes, QString* error = nullptr);
