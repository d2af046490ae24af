#pragma once

#include <QByteArray>
#include <QJsonObject>

// The protocol's framing: every message is one JSON object followed by CR LF. The JSON itself
// is indented and so holds bare LF characters, which never end a message.

// One message as it goes on the wire: indented JSON, then CR LF.
QByteArray frameMessage(const QJsonObject& object);

// The object a line holds; false when it is not a non-empty JSON object.
bool parseMessage(const QByteArray& line, QJsonObject& object);

// Collects received bytes and hands out the complete lines, without their CR LF.
class LineBuffer {
public:
    void append(const QByteArray& bytes) { bytes_.append(bytes); }
    // The next complete line; false while none has arrived.
    bool takeLine(QByteArray& line);
    void clear();
    // Bytes waiting for their CR LF.
    int size() const { return bytes_.size(); }

private:
    QByteArray bytes_;
    int searchedUpTo_ = 0;  // no CR LF starts before this offset
};
