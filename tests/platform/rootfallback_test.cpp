// Without a usable root on a host, the root falls back to a folder of our own under an
// existing temporary folder, never to "/lumaspecter-root" on the host itself.

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>

#include "platformroot.h"

namespace {

// Sets an environment variable for the life of the object ("" unsets it).
class Environment {
public:
    Environment(const char* name, const QByteArray& value)
        : name_(name), old_(qgetenv(name)), had_(qEnvironmentVariableIsSet(name)) {
        value.isNull() ? qunsetenv(name) : qputenv(name, value);
    }
    ~Environment() { had_ ? qputenv(name_, old_) : qunsetenv(name_); }

private:
    const char* name_;
    QByteArray old_;
    bool had_;
};

}  // namespace

TEST(PlatformRootFallback, StaysUnderAnExistingTemporaryFolder) {
    const struct {
        QByteArray root, tmpdir;
    } cases[] = {
        {QByteArray(), "/no/such/folder"}, {"/", "/"}, {"//", ""}, {"", "/"}, {"/", QByteArray()},
    };
    for (const auto& c : cases) {
        const Environment root("LUMASPECTER_ROOT", c.root);
        const Environment tmpdir("TMPDIR", c.tmpdir);
        setPlatformRoot(QString());
        const QString chosen = QDir::cleanPath(platformRoot());
        EXPECT_NE(chosen.toStdString(), "/lumaspecter-root")
            << c.root.constData() << " " << c.tmpdir.constData();
        EXPECT_NE(QFileInfo(chosen).path(), "/") << chosen.toStdString();
        EXPECT_TRUE(QFileInfo(QFileInfo(chosen).path()).isDir()) << chosen.toStdString();
    }
}
