#pragma once

#include <QTimer>
#include <functional>

#include "remotecontroller.h"
#include "remotetasklist.h"
#include "taskjson.h"
#include "tasklist.h"

// A small controller for the protocol's tests: a real task list on the test's platform root,
// and a measure key that moves the state as the instrument does (live view -> capture; a
// result screen -> live view; all multi-fiber steps taken in state 8 -> the measurement).
class StandInController : public RemoteController {
public:
    int state = 6, steps = 0, exposure = -1, liveViewRestarts = 0;
    QString id = "SN1", currentId;
    QList<int> pressStates;  // the state at each press of the measure key
    RemoteMeasurement measurement;
    TaskList list;
    std::function<void()> runFinished;  // called a little after a press starts a capture

    int deviceState() const override { return state; }
    TaskInfoSetting currentTask() const override {
        const int index = keepCurrentTask(list.tasks(), currentId).index;
        return index < 0 ? TaskInfoSetting{} : list.tasks()[index];
    }
    QString connectorId() const override { return id; }
    RemoteReportTexts reportTexts() const override { return {"Fiber", "Admin", "Quarvelin"}; }
    const RemoteMeasurement& lastMeasurement() const override { return measurement; }
    bool captureRunning() const override { return true; }
    int multiFiberStepsTaken() const override { return steps; }
    int updateTaskListFromJsonObject(const QJsonObject& request) override {
        return reloaded(list.updateTaskListFromJsonObject(request));
    }
    int deleteTaskByTaskId(const QString& taskId) override {
        return reloaded(list.deleteTaskByTaskId(taskId));
    }
    void setConnectorId(const QString& connector) override { id = connector; }
    bool selectTaskById(const QString& taskId) override {
        const bool known = !keepCurrentTask(list.tasks(), taskId).changed;
        currentId = known ? taskId : currentId;
        return known;
    }
    void pressMeasureKey() override {
        pressStates.append(state);
        if (state != 8 || steps != 3) {  // else the multi-fiber measurement runs
            state = state == 6 ? 2 : 6;
        }
        if (state == 2 && runFinished) {
            QTimer::singleShot(20, runFinished);
        }
    }
    void setCaptureExposure(int value) override { exposure = value; }

private:
    int reloaded(int status) {
        list.readTaskListFromJsonFile();
        const TaskReload kept = keepCurrentTask(list.tasks(), currentId);
        currentId = kept.index < 0 ? "" : taskText(list.tasks()[kept.index].taskId);
        liveViewRestarts += kept.changed && liveViewMayRestart(state);
        return status;
    }
};
