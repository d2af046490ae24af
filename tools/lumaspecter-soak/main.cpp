// lumaspecter-soak: single-fiber live view against the simulated instrument for many frames,
// the pictures received as the screen receives them, printing what the process holds (resident
// memory, descriptors, the camera's buffer mappings) at the start and every 10,000 frames. A
// leak anywhere on the frames' path shows as a line that keeps growing. Run by hand, not in CI.

#include <dirent.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTimer>
#include <cstdio>
#include <fstream>
#include <string>

#include "capturethread.h"
#include "fakekernel.h"
#include "platformroot.h"
#include "twinworld.h"

namespace {

constexpr unsigned kReportEvery = 10000;
constexpr unsigned kWarmFrames = 100;  // the light drawn, the libraries' pools made

long residentKb() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::stol(line.substr(6));
        }
    }
    return -1;
}

int descriptors() {
    int count = 0;
    DIR* dir = opendir("/proc/self/fd");
    while (dir != nullptr && readdir(dir) != nullptr) {
        ++count;
    }
    if (dir != nullptr) {
        closedir(dir);
    }
    return count;
}

int bufferMappings() {
    std::ifstream maps("/proc/self/maps");
    int count = 0;
    for (std::string line; std::getline(maps, line);) {
        count += line.find("lumaspecter-v4l2-buffer") != std::string::npos;
    }
    return count;
}

void report(const char* when, unsigned frames, unsigned pictures) {
    std::printf("%-5s frames %8u pictures %8u resident %7ld kB descriptors %3d mappings %d\n", when,
                frames, pictures, residentKb(), descriptors(), bufferMappings());
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Single-fiber live view against the twin for many frames.");
    parser.addHelpOption();
    parser.addOptions({{"frames", "Frames to run (default 100000).", "N"},
                       {"fps", "The twin's frames a second (default 30).", "F"},
                       {"root", "Platform root for the instrument's fixed paths.", "DIR"}});
    parser.process(app);
    const unsigned frames = parser.isSet("frames") ? parser.value("frames").toUInt() : 100000;
    const double fps = parser.isSet("fps") ? parser.value("fps").toDouble() : 30.0;
    if (frames < kWarmFrames || !(fps > 0.0 && fps <= 1000.0)) {
        std::fprintf(stderr, "lumaspecter-soak: --frames takes at least %u, --fps 0 to 1000\n",
                     kWarmFrames);
        return 2;
    }
    if (parser.isSet("root")) {
        setPlatformRoot(parser.value("root"));
    }

    sim::TwinWorld world;
    world.setFramePeriod(std::chrono::nanoseconds(long(1e9 / fps)));
    fakekernel::FakeKernel kernel(world);
    CaptureThread thread;
    unsigned pictures = 0;
    QObject::connect(&thread, &CaptureThread::updateVideoFrameByMat, &app,
                     [&pictures](cv::Mat picture) { pictures += !picture.empty(); });
    thread.startCapture(CAPTURE_SINGLE_FIBER_LIVE);

    unsigned nextReport = kWarmFrames;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        const unsigned taken = kernel.capture().takenBuffers();
        if (taken >= nextReport) {
            report(nextReport == kWarmFrames ? "start" : "", taken, pictures);
            nextReport = nextReport == kWarmFrames ? kReportEvery : nextReport + kReportEvery;
        }
        if (taken >= frames) {
            thread.stopCapture();
            QCoreApplication::processEvents();
            report("end", taken, pictures);
            app.quit();
        }
    });
    poll.start(50);
    return app.exec();
}
