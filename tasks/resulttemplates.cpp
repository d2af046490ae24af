#include "resulttemplates.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "atomicfile.h"
#include "platformroot.h"
#include "shellrunner.h"

// The resources live in an object library of their own; naming its initialiser here makes the
// linker keep them whoever links this library. (It must be called outside any namespace.)
static void registerTemplateResources() {
    Q_INIT_RESOURCE(templates);
}

namespace {

bool installTemplate(const QString& name, bool& wrote) {
    const QString target = platformPath("/etc/" + name);
    if (QFileInfo::exists(target)) {
        return true;
    }
    QFile resource(":/templates/" + name);
    wrote = true;
    return resource.open(QIODevice::ReadOnly) && writeFileAtomically(target, resource.readAll());
}

}  // namespace

const QStringList& resultTemplateNames() {
    static const QStringList names = {
        "MeasureResultDataTemplate_EN.xlsx",
        "MeasureResultDataTemplate_CN.xlsx",
        "MeasureResultReportTemplate_EN.xlsx",
        "MeasureResultReportTemplate_CN.xlsx",
        "DataEndfaceMT12_EN.xlsx",
        "DataEndfaceMT12_CN.xlsx",
        "ReportEndfaceMT12_EN.xlsx",
        "ReportEndfaceMT12_CN.xlsx",
    };
    return names;
}

QString resultTemplatePath(const QString& name) {
    const QString installed = platformPath("/etc/" + name);
    if (QFileInfo(installed).isFile()) {
        return installed;
    }
    registerTemplateResources();
    return ":/templates/" + name;
}

bool installTemplatesIfMissing() {
    registerTemplateResources();
    if (!QDir().mkpath(platformPath("/etc"))) {
        return false;
    }
    bool ok = true;
    bool wrote = false;
    for (const QString& name : resultTemplateNames()) {
        ok = installTemplate(name, wrote) && ok;
    }
    if (wrote) {
        runShellCommand("sync");
    }
    return ok;
}
