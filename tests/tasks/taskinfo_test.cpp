#include "taskinfo.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSet>

#include "taskjson.h"
#include "uuid.h"

namespace {

// Sends the records by their short names, as the editor and the measurement thread do.
class RecordSender : public QObject {
    Q_OBJECT
signals:
    void newTaskInfo(TaskInfo task, int index);
    void zoneResult(ZoneResult result);
};

class RecordReceiver : public QObject {
    Q_OBJECT
public:
    TaskInfoSetting task{};
    int index = -1;
    TaskZoneResult result{};
public slots:
    void onNewTaskInfo(TaskInfo received, int at) {
        task = received;
        index = at;
    }
    void onZoneResult(ZoneResult received) { result = received; }
};

}  // namespace

// A queued connection copies its arguments through their registered types, as between the
// measurement thread and the window; an unregistered name is dropped with only a warning.
TEST(TaskRecords, QueuedSignalsCarryThemByTheirShortNames) {
    int argc = 0;
    QCoreApplication app(argc, nullptr);
    registerTaskMetaTypes();
    RecordReceiver receiver;
    RecordSender sender;
    ASSERT_TRUE(QObject::connect(&sender, SIGNAL(newTaskInfo(TaskInfo, int)), &receiver,
                                 SLOT(onNewTaskInfo(TaskInfo, int)), Qt::QueuedConnection));
    ASSERT_TRUE(QObject::connect(&sender, SIGNAL(zoneResult(ZoneResult)), &receiver,
                                 SLOT(onZoneResult(ZoneResult)), Qt::QueuedConnection));

    TaskInfoSetting task{};
    setTaskText(task.taskName, "Sent across");
    task.sectionNum = 6;
    task.sections[5].dBiggerLimit = -1;
    task.zoneResults[5].dArea = 12.5;
    TaskZoneResult result{};
    result.dMidResult = 1;
    result.dArea = 3.25;
    emit sender.newTaskInfo(task, 4);
    emit sender.zoneResult(result);
    EXPECT_EQ(receiver.index, -1) << "nothing arrives before the event loop runs";
    QCoreApplication::sendPostedEvents();

    EXPECT_STREQ(receiver.task.taskName, "Sent across");
    EXPECT_EQ(receiver.task.sections[5].dBiggerLimit, -1);
    EXPECT_EQ(receiver.task.zoneResults[5].dArea, 12.5);
    EXPECT_EQ(receiver.index, 4);
    EXPECT_EQ(receiver.result.dMidResult, 1);
    EXPECT_EQ(receiver.result.dArea, 3.25);
}

TEST(Uuid, FreshIdsAreVersionFourAndDistinct) {
    const QRegularExpression form(
        "^[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}$");
    QSet<QString> seen;
    for (int i = 0; i < 1000; ++i) {
        const QString id = createUUID();
        ASSERT_TRUE(form.match(id).hasMatch()) << id.toStdString();
        seen.insert(id);
    }
    EXPECT_EQ(seen.size(), 1000);
}

#include "taskinfo_test.moc"
