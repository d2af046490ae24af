// lumaspecter-render: writes a synthetic end-face frame (or a region of one) and its ground
// truth, for demos, scripts and trying the inspection on known scenes.

#include <QCoreApplication>
#include <QTextStream>

#include "platformroot.h"
#include "renderoutput.h"
#include "renderrequest.h"

namespace {

constexpr int kBadArguments = 2;
constexpr int kCannotWrite = 1;

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream err(stderr);
    RenderRequest request;
    bool wantsHelp = false;
    const QString error = parseRenderRequest(app.arguments(), request, wantsHelp);
    if (wantsHelp) {
        QTextStream(stdout) << renderUsage();
        return 0;
    }
    if (!error.isEmpty()) {
        err << "lumaspecter-render: " << error << " (see --help)\n";
        return kBadArguments;
    }
    if (!request.root.isEmpty()) {
        setPlatformRoot(request.root);
    }
    const QString failure = writeRendering(request);
    if (!failure.isEmpty()) {
        err << "lumaspecter-render: " << failure << "\n";
        return kCannotWrite;
    }
    return 0;
}
