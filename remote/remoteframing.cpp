#include "remoteframing.h"

#include <QJsonDocument>

#include "taskjson.h"

namespace {
const QByteArray kLineEnd("\r\n");
}

QByteArray frameMessage(const QJsonObject& object) {
    return QJsonDocument(object).toJson() + kLineEnd;
}

bool parseMessage(const QByteArray& line, QJsonObject& object) {
    // A message is read as strictly as the task file's root: a non-empty object, nothing else.
    return parseTaskFileRoot(line, object);
}

bool LineBuffer::takeLine(QByteArray& line) {
    // A long line arrives in many pieces: the search goes on where the last one stopped.
    const int end = bytes_.indexOf(kLineEnd, searchedUpTo_);
    if (end < 0) {
        searchedUpTo_ = qMax(0, bytes_.size() - 1);
        return false;
    }
    line = bytes_.left(end);
    bytes_.remove(0, end + kLineEnd.size());
    searchedUpTo_ = 0;
    return true;
}

void LineBuffer::clear() {
    bytes_.clear();
    searchedUpTo_ = 0;
}
