#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>

#include "taskinfo.h"

// The task file: one JSON object whose key "taskInfo" holds an array of task objects. Every
// value, numbers included, is a JSON string.

// A task object as written to the file: every zone up to the task's zone count, numbers in
// base 10 ("-1" for unlimited).
QJsonObject taskToJson(const TaskInfoSetting& task);

// A task record from a task object. A missing key, a value that is not a string, and a text
// that is not a base-10 number inside the 16-bit range all read as 0 (or empty text). Texts
// are cut to the record's 255 bytes at a character boundary and zones to its six.
TaskInfoSetting taskFromJson(const QJsonObject& object);

// The root object of a task file; false when the bytes are not a non-empty JSON object.
bool parseTaskFileRoot(const QByteArray& bytes, QJsonObject& root);

// Parses a task file. Returns 0 and the tasks in file order, or -1 (tasks untouched) when the
// bytes are not a non-empty JSON object.
int parseTaskFile(const QByteArray& bytes, QList<TaskInfoSetting>& tasks);

// The whole file for a list of tasks, indented.
QByteArray taskFileBytes(const QList<TaskInfoSetting>& tasks);

// A number as the task file and the editors write it: base 10, and 0 when the text is not a
// 16-bit number (a value out of range counts as not a number).
int16_t parseTaskNumber(const QString& text);

// Copies text into a record's text field: UTF-8, NUL-terminated, cut to the field's capacity
// without splitting a character.
void setTaskText(char (&field)[kTaskTextCapacity], const QString& text);

// The text of a record's text field.
QString taskText(const char (&field)[kTaskTextCapacity]);
