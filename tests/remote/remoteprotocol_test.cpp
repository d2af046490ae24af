// Every method against the stand-in controller, over a real connection on loopback.

#include <QJsonArray>
#include <QJsonDocument>

#include "remotetesting.h"

namespace {

QJsonObject json(const char* text) {
    return QJsonDocument::fromJson(text).object();
}

// A request in a state, with the task file as given (nullptr: none), and the answer's "data"
// expected: the keys given over {"result": "success", "desc": ""}.
struct Exchange {
    int state;
    const char* taskFile;
    const char* request;
    int method;
    const char* data;
    int exposure;  // afterwards; -1 untouched
};

const char kFailure[] = R"({"result":"failure"})";
const char kBadTasks[] = R"({"result":"failure","desc":"parse task error"})";
const char kInfo[] = R"({"DeviceInfo":{"deviceName":"Lumaspecter","deviceId":"SN12345678",)"
                     R"("softwareVersion":"v1.1.3","hardwareVersion":"v1.0.1",)"
                     R"("firmwareVersion":"v2.6.32"}})";

const Exchange kExchanges[] = {
    {6, nullptr, R"({"x":1})", 0, kFailure, -1},
    {6, nullptr, R"({"RequestMethodId":"3"})", 0, kFailure, -1},
    {6, nullptr, R"({"RequestMethodId":4.5})", 0, kFailure, -1},
    {6, nullptr, R"({"RequestMethodId":3})", 3, kInfo, -1},
    {8, nullptr, R"({"RequestMethodId":7})", 7, R"({"state":"8"})", -1},
    {6, nullptr, R"({"RequestMethodId":8})", 8, "{}", -1},
    {6, nullptr, R"({"RequestMethodId":42})", 42, "{}", -1},
    {6, nullptr, R"({"RequestMethodId":4})", 4, R"({"Measure":{}})", -1},
    {6, nullptr, R"({"RequestMethodId":2})", 2, "{}", -1},
    {6, "{\"taskInfo\":[", R"({"RequestMethodId":2})", 2, kBadTasks, -1},
    {6, "{}", R"({"RequestMethodId":2})", 2, kBadTasks, -1},
    {6, kTwoTasks, R"({"RequestMethodId":2})", 2, kTwoTasks, -1},
    {6, nullptr, R"({"RequestMethodId":6,"type":"Brightness","value":10})", 6, "{}", -1},
    {6, nullptr, R"({"RequestMethodId":6,"type":"Brightness","value":11})", 6, "{}", 11},
    {6, nullptr, R"({"RequestMethodId":6,"type":"Brightness","value":"199"})", 6, "{}", 199},
    {6, nullptr, R"({"RequestMethodId":6,"type":"Brightness","value":200})", 6, "{}", -1},
    {6, nullptr, R"({"RequestMethodId":6,"type":"Brightness"})", 6, "{}", 20},
    {6, nullptr, R"({"RequestMethodId":6,"type":"brightness","value":50})", 6, "{}", -1},
    {3, nullptr, R"({"RequestMethodId":6,"type":"Brightness","value":50})", 6, "{}", -1},
    {6, nullptr, R"({"RequestMethodId":1,"taskId":"t3"})", 1,
     R"({"result":"failure","desc":"update failure"})", -1},
    {6, kTwoTasks, R"({"RequestMethodId":1,"taskId":"t3"})", 1, "{}", -1},
    {6, kTwoTasks, R"({"RequestMethodId":10,"taskId":"t9"})", 10, kFailure, -1},
    {6, kTwoTasks, R"({"RequestMethodId":10,"taskId":"t2"})", 10, "{}", -1},
};

TEST_F(RemoteTest, EveryMethodAnswersAsTheTableSays) {
    TestClient client(server.serverPort());
    for (const Exchange& exchange : kExchanges) {
        controller.state = exchange.state;
        controller.exposure = -1;
        QFile::remove(root.file("etc/taskinfo.conf"));
        if (exchange.taskFile) {
            writeTaskFile(exchange.taskFile);
        }
        client.ask(json(exchange.request));
        QJsonObject data = json(exchange.data);
        data.insert("result", data.value("result").toString("success"));
        data.insert("desc", data.value("desc").toString(""));
        EXPECT_EQ(client.next(), QJsonObject({{"method", exchange.method}, {"data", data}}))
            << exchange.request;
        EXPECT_EQ(controller.exposure, exchange.exposure) << exchange.request;
    }
}

TEST_F(RemoteTest, StartAndTriggerPressTheMeasureKeyOnlyInTheirStates) {
    struct {
        int method, state, steps;
        QList<int> pressStates;  // the state at each press, the delayed one included
    } cases[] = {{5, 6, 0, {6}}, {5, 3, 0, {3, 6}}, {5, 9, 0, {9, 6}}, {5, 8, 1, {8, 6}},
                 {5, 8, 3, {8}}, {5, 1, 0, {}},     {5, 7, 0, {}},     {9, 9, 0, {9}},
                 {9, 3, 0, {3}}, {9, 6, 0, {}}};
    TestClient client(server.serverPort());
    for (const auto& test : cases) {
        controller.state = test.state;
        controller.steps = test.steps;
        controller.pressStates.clear();
        client.ask({{"RequestMethodId", test.method}});
        EXPECT_EQ(client.next().value("method").toInt(), test.method);
        // The answer is sent before the second press: the pause never blocks the thread.
        EXPECT_LE(controller.pressStates.size(), 1);
        spinUntil([] { return false; }, RemoteMethods::kSecondPressDelayMs + 100);
        EXPECT_EQ(controller.pressStates, test.pressStates) << test.method << " " << test.state;
    }
    // All multi-fiber steps taken, and live view back by the time of the second press.
    controller.state = 8;
    controller.pressStates.clear();
    client.ask({{"RequestMethodId", 5}, {"connectorId", "C-17"}});
    client.next();
    controller.state = 6;
    EXPECT_TRUE(spinUntil([&] { return controller.pressStates == QList<int>{8, 6}; }));
    EXPECT_EQ(controller.id, "C-17");
    controller.state = 6;
    server.onNetworkMessage({{"RequestMethodId", 5}}, kRaisedLocally);  // only clients start
    EXPECT_EQ(controller.pressStates.size(), 2);
}

TEST_F(RemoteTest, TaskEditsKeepTheCurrentTaskAndLeaveAMeasurementAlone) {
    writeTaskFile(kTwoTasks);
    TestClient client(server.serverPort());
    client.ask({{"RequestMethodId", 5}, {"taskId", "t2"}});  // a start selects a known task
    client.next();
    client.ask({{"RequestMethodId", 1}, {"taskId", "t0"}});  // put first: t2 moves down
    client.next();
    EXPECT_EQ(controller.currentId, "t2");
    client.ask({{"RequestMethodId", 10}, {"taskId", "t2"}});  // during the capture
    client.next();
    EXPECT_EQ(controller.currentId, "t0");
    EXPECT_EQ(controller.liveViewRestarts, 0);
}

TEST_F(RemoteTest, ARunIsPushedAsStateThenResultToAConnectedClientOnly) {
    finishRun(0);
    server.pushMeasurementResult();  // no client: nothing is kept for a later one
    TestClient client(server.serverPort());
    controller.state = 3;
    server.pushMeasurementResult();
    EXPECT_EQ(client.next().value("data").toObject().value("state"), "3");
    QJsonObject measure = client.next().value("data").toObject().value("Measure").toObject();
    for (const char* key : {"overlayImageData", "originImageData"}) {
        const QByteArray jpeg = QByteArray::fromBase64(measure.take(key).toString().toLatin1());
        EXPECT_EQ(QImage::fromData(jpeg, "jpg").size(), QSize(64, 48)) << key;
    }
    EXPECT_EQ(measure.take("saveTime").toString().size(), 19);
    EXPECT_EQ(measure, json(R"({"taskId":"t1","taskName":"","opticalType":"0","contactorType":"0",
        "saveName":"SN1","imageWidth":"64","imageHeight":"48","fiberX":"30","fiberY":"20",
        "measureResult":"1","zoneNumber":"2","description":"Fiber","operator":"Admin",
        "manufacturer":"Quarvelin","zoneResults":[{"zoneName":"A","innerDiameter":"0",
        "outerDiameter":"0","sNoBiggerNum":"1","sNoBiggerResult":"1","sBiggerNum":"0",
        "sBiggerResult":"1","dNoBiggerNum":"3","dNoBiggerResult":"1","dMidNum":"2",
        "dMidReuslt":"0","dBiggerNum":"0","dBiggerResult":"1","dArea":"12.5"}]})"));
    finishRun(1);  // a multi-fiber result has no single center
    server.pushLiveViewRestarted();
    EXPECT_EQ(client.next().value("method"), 7);
    EXPECT_EQ(client.next().value("data").toObject().value("saveName"), "SN1");
    client.ask({{"RequestMethodId", 4}});
    EXPECT_EQ(client.next().value("data").toObject().value("Measure").toObject().value("fiberX"),
              "0");
}

}  // namespace
