#include "remotemethods.h"

#include <QDateTime>
#include <QTimer>

#include "remotereplies.h"
#include "taskjson.h"

namespace {

constexpr int kLiveView = 6;
constexpr int kDefaultBrightness = 20;
constexpr int kMultiFiberSteps = 3;

bool measurementMayStart(int state) {
    return state == 3 || state == kLiveView || state == 8 || state == 9;
}

// "value" as a JSON integer or as decimal text; 20 when it is neither.
int brightnessValue(const QJsonValue& value) {
    if (value.isString()) {
        bool ok = false;
        const int number = value.toString().toInt(&ok, 10);
        return ok ? number : kDefaultBrightness;
    }
    return value.toInt(kDefaultBrightness);
}

}  // namespace

int requestMethodId(const QJsonObject& request) {
    return request.value("RequestMethodId").toInt(0);
}

RemoteMethods::RemoteMethods(RemoteController& controller, QObject* parent)
    : QObject(parent), controller_(controller) {}

QJsonObject RemoteMethods::run(int method, const QJsonObject& request, int origin) {
    QJsonObject data{{"result", "success"}, {"desc", ""}};
    switch (method) {
        case 0:
            data["result"] = "failure";
            break;
        case 1:
            updateTasks(request, data);
            break;
        case 2:
            addTaskFileReply(data);
            break;
        case 3:
            data["DeviceInfo"] = deviceInfoReply();
            break;
        case 4:
            data["Measure"] =
                measurementReply(controller_.lastMeasurement(), controller_.connectorId(),
                                 controller_.reportTexts(), QDateTime::currentDateTime());
            break;
        case 5:
            startMeasurement(request, origin);
            break;
        case 6:
            setBrightness(request);
            break;
        case 7:
            data["state"] = QString::number(controller_.deviceState());
            break;
        case 9:
            trigger(origin, data);
            break;
        case 10:
            deleteTask(request, data);
            break;
        default:
            break;
    }
    return data;
}

void RemoteMethods::updateTasks(const QJsonObject& request, QJsonObject& data) {
    if (controller_.updateTaskListFromJsonObject(request) < 0) {
        data["result"] = "failure";
        data["desc"] = "update failure";
    }
}

void RemoteMethods::startMeasurement(const QJsonObject& request, int origin) {
    if (origin != kFromClient || !measurementMayStart(controller_.deviceState())) {
        return;
    }
    if (request.value("connectorId").isString()) {
        controller_.setConnectorId(request.value("connectorId").toString());
    }
    const QString taskId = request.value("taskId").toString();
    if (taskId != taskText(controller_.currentTask().taskId)) {
        controller_.selectTaskById(taskId);
    }
    const int state = controller_.deviceState();
    if (state != kLiveView) {
        // The first press leaves the result screen for live view; on a multi-fiber result
        // whose three steps are all taken it starts the measurement instead, and a second
        // press then would start a second one: it is made only if live view came back.
        const bool startsMultiFiberRun =
            state == 8 && controller_.multiFiberStepsTaken() >= kMultiFiberSteps;
        controller_.pressMeasureKey();
        QTimer::singleShot(kSecondPressDelayMs, this, [this, startsMultiFiberRun] {
            if (!startsMultiFiberRun || controller_.deviceState() == kLiveView) {
                controller_.pressMeasureKey();
            }
        });
        return;
    }
    controller_.pressMeasureKey();
}

void RemoteMethods::setBrightness(const QJsonObject& request) {
    if (request.value("type").toString() != "Brightness") {
        return;
    }
    const int value = brightnessValue(request.value("value"));
    if (value >= 11 && value <= 199 && controller_.deviceState() == kLiveView &&
        controller_.captureRunning()) {
        controller_.setCaptureExposure(value);
    }
}

void RemoteMethods::trigger(int origin, QJsonObject& data) {
    if (origin == kRaisedLocally) {
        data["saveName"] = controller_.connectorId();
        data["taskId"] = taskText(controller_.currentTask().taskId);
        return;
    }
    const int state = controller_.deviceState();
    if (state == 9 || state == 3) {
        controller_.pressMeasureKey();
    }
}

void RemoteMethods::deleteTask(const QJsonObject& request, QJsonObject& data) {
    // Every failure of the store is one, the file that could not be written as well.
    if (controller_.deleteTaskByTaskId(request.value("taskId").toString()) < 0) {
        data["result"] = "failure";
    }
}
