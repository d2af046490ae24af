#include "temproot.h"

#include "platformroot.h"

TempRoot::TempRoot() : previousRoot_(qgetenv("LUMASPECTER_ROOT")) {
    qputenv("LUMASPECTER_ROOT", dir_.path().toUtf8());
    setPlatformRoot(QString());
}

TempRoot::~TempRoot() {
    if (previousRoot_.isEmpty()) {
        qunsetenv("LUMASPECTER_ROOT");
    } else {
        qputenv("LUMASPECTER_ROOT", previousRoot_);
    }
}

QString TempRoot::file(const QString& relative) const {
    return dir_.path() + "/" + relative;
}
