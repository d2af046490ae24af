#include "realsamples.h"

#include <QDir>

QString realSamplesDir() {
    return QStringLiteral(LUMASPECTER_SAMPLES_DIR);
}

QStringList realSamplePictures() {
    const QDir dir(realSamplesDir());
    QStringList paths;
    for (const QString& name : dir.entryList({"*.png"}, QDir::Files, QDir::Name)) {
        paths << dir.filePath(name);
    }
    return paths;
}
