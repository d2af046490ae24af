#pragma once

#include <QImage>
#include <QJsonObject>
#include <QList>
#include <QString>

#include "taskinfo.h"

// What the controller keeps of a finished measurement for the remote client. It is a copy
// taken when the run has finished (in the handler of the run's finished signal, before the
// result is pushed): the measurement threads reuse their buffers on the next run, so a client
// asking for the result while the next run is under way would otherwise read half-overwritten
// pictures and counts.
struct RemoteMeasurement {
    bool taken = false;  // false until the first run has finished
    bool pass = false;
    QImage overlay;
    QImage image;
    QList<TaskZoneResult> results;
    TaskInfoSetting task{};  // the task the run used
    int fiberX = 0;          // the fiber center in `image` (single fiber only)
    int fiberY = 0;
};

// The report texts of the settings ("DESCRIBER", "OPERATOR", "MANUFACTURER").
struct RemoteReportTexts {
    QString description;
    QString operatorName;
    QString manufacturer;
};

// What the remote protocol reads from the main controller and what it may ask of it. The
// controller implements it; the protocol holds no state of the instrument itself, so every
// answer reflects the controller at the moment of the request.
class RemoteController {
public:
    virtual ~RemoteController() = default;

    // Reading.
    virtual int deviceState() const = 0;  // DEVICE_STATE: 6 is live view
    virtual TaskInfoSetting currentTask() const = 0;
    virtual QString connectorId() const = 0;  // the connector identifier field
    virtual RemoteReportTexts reportTexts() const = 0;
    virtual const RemoteMeasurement& lastMeasurement() const = 0;
    virtual bool captureRunning() const = 0;       // the camera thread runs
    virtual int multiFiberStepsTaken() const = 0;  // capture steps of the multi-fiber run, 0 to 3

    // Asking. The two task edits return what the task store returns (-1 on failure) and then
    // refresh the controller's task list, keeping the current task by its taskId and never
    // restarting live view while a trigger's capture or measurement runs.
    virtual int updateTaskListFromJsonObject(const QJsonObject& request) = 0;
    virtual int deleteTaskByTaskId(const QString& taskId) = 0;
    virtual void setConnectorId(const QString& id) = 0;
    // Selects the task with this taskId when the list has one; false otherwise.
    virtual bool selectTaskById(const QString& taskId) = 0;
    // The operator's measure key pressed once (key code 279, value 1).
    virtual void pressMeasureKey() = 0;
    virtual void setCaptureExposure(int exposure) = 0;
};
