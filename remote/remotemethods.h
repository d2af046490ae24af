#pragma once

#include <QJsonObject>
#include <QObject>

#include "remotecontroller.h"

// Where a message comes from: the client, or the controller reporting something itself.
enum RemoteOrigin { kFromClient = 0, kRaisedLocally = 1 };

// Runs the protocol's methods 0 to 10 against the controller and builds each answer's "data".
class RemoteMethods : public QObject {
    Q_OBJECT

public:
    // The pause between the two presses of the measure key when a start has to leave a result
    // screen first.
    static constexpr int kSecondPressDelayMs = 500;

    explicit RemoteMethods(RemoteController& controller, QObject* parent = nullptr);

    // The "data" of the answer to a request with this method id.
    QJsonObject run(int method, const QJsonObject& request, int origin);

private:
    void updateTasks(const QJsonObject& request, QJsonObject& data);
    void startMeasurement(const QJsonObject& request, int origin);
    void setBrightness(const QJsonObject& request);
    void trigger(int origin, QJsonObject& data);
    void deleteTask(const QJsonObject& request, QJsonObject& data);

    RemoteController& controller_;
};

// A request's method id: "RequestMethodId" when it is an integer, else 0.
int requestMethodId(const QJsonObject& request);
