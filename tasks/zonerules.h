#pragma once

#include <QList>
#include <QSet>
#include <QString>

#include "taskinfo.h"

// The rules by which the task and zone editors accept what the user typed. The dialogs only
// call them, so that the rules are the same wherever a task is edited.

constexpr int kContactorSF = 0;
constexpr int kContactorMF = 1;

// The zone editor refuses a diameter pair only when it is inverted or equal AND its outer
// value exceeds 500 um. 30 / 20 passes on purpose: the rule is kept this narrow.
bool isDiameterPairRejected(int diameterMin, int diameterMax);

// Whether another zone may be added to a task that has zoneCount zones: up to six for a
// single-fiber task, up to three for a multi-fiber one.
bool canAddZone(int zoneCount, int contactorType);

// Whether another task (one with a different id) already has this name. Names are compared
// exactly as typed.
bool isTaskNameTaken(const QList<TaskInfoSetting>& tasks, const QString& name,
                     const QString& ownTaskId);

// The ids of the built-in tasks, read once from the factory task file. Those tasks cannot be
// deleted from the settings screen.
const QSet<QString>& builtInTaskIds();
bool isBuiltInTaskId(const QString& taskId);
