#include "renderoutput.h"

#include <QFile>
#include <opencv2/imgcodecs.hpp>

#include <vector>

#include "endfacerenderer.h"

namespace {

struct Window {
    int left, top, width, height;
};

Window windowOf(const RenderRequest& request) {
    if (request.region) {
        return {request.regionX - kRegionSide / 2, request.regionY - kRegionSide / 2, kRegionSide,
                kRegionSide};
    }
    return {0, 0, kSensorWidth, kSensorHeight};
}

bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size() && file.flush();
}

// 16-bit words, low byte first whatever the host's byte order.
QByteArray littleEndianWords(const std::vector<uint16_t>& words) {
    QByteArray bytes(int(words.size() * 2), '\0');
    for (size_t i = 0; i < words.size(); ++i) {
        bytes[int(2 * i)] = char(words[i] & 0xff);
        bytes[int(2 * i + 1)] = char(words[i] >> 8);
    }
    return bytes;
}

QString writePicture(const RenderRequest& request, const Window& w) {
    const sim::EndFaceScene& scene = request.scene;
    const size_t count = size_t(w.width) * w.height;
    bool written = false;
    if (request.raw && !request.region) {
        std::vector<uint16_t> raw(count);
        written = sim::renderRaw(scene, w.left, w.top, w.width, w.height, raw.data()) == 1 &&
                  writeFile(request.output, littleEndianWords(raw));
    } else {
        std::vector<uint8_t> gray(count);
        const bool rendered =
            sim::renderGray(scene, w.left, w.top, w.width, w.height, gray.data()) == 1;
        const cv::Mat picture(w.height, w.width, CV_8UC1, gray.data());
        written =
            rendered &&
            (request.raw
                 ? writeFile(request.output,
                             QByteArray(reinterpret_cast<const char*>(gray.data()), int(count)))
                 : cv::imwrite(request.output.toStdString(), picture));
    }
    return written ? QString() : QString("cannot write %1").arg(request.output);
}

}  // namespace

QString writeRendering(const RenderRequest& request) {
    const Window window = windowOf(request);
    const QString error = writePicture(request, window);
    if (!error.isEmpty()) {
        return error;
    }
    const std::string truth = sim::groundTruthJson(request.scene, window.left, window.top);
    const QString truthPath = request.output + ".json";
    if (!writeFile(truthPath, QByteArray::fromStdString(truth))) {
        return QString("cannot write %1").arg(truthPath);
    }
    return {};
}
