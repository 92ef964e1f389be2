#include "host/panel/CorvelProcess.h"

#include <sys/resource.h>

#include <QCoreApplication>
#include <QJsonDocument>
#include <memory>

namespace Corvel::Panel {

namespace {

constexpr int lowerPriority = 5;

// Of the panel's own child only, after its birth.
void lowerOwnPriority() {
    setpriority(PRIO_PROCESS, 0, lowerPriority);
}

}  // namespace

void Lines::add(const QByteArray& bytes, const std::function<void(const QByteArray&)>& line) {
    unfinished += bytes;
    for (qsizetype end = unfinished.indexOf('\n'); end >= 0; end = unfinished.indexOf('\n')) {
        const QByteArray whole = unfinished.left(end);
        unfinished.remove(0, end + 1);
        line(whole);
    }
}

void startCorvel(QProcess& process, const QStringList& arguments) {
    process.setProgram(QCoreApplication::applicationDirPath() + "/../MacOS/corvel");
    process.setArguments(arguments);
    process.setChildProcessModifier(lowerOwnPriority);
    process.start();
}

Message messageOf(const QByteArray& line, const QJsonObject& event) {
    if (event.isEmpty()) {
        return {"error", QString::fromUtf8(line)};
    }
    if (event["event"].toString() != "message") {
        return {};
    }
    return {event["level"].toString(), event["text"].toString()};
}

void runCorvel(QObject* owner, const QStringList& arguments,
               const std::function<void(bool, const QByteArray&, const QString&)>& told) {
    auto* process = new QProcess(owner);
    QObject::connect(process, &QProcess::finished, owner,
                     [process, told](int code, QProcess::ExitStatus how) {
                         const QByteArray errors = process->readAllStandardError().trimmed();
                         told(how == QProcess::NormalExit && code == 0, process->readAllStandardOutput(),
                              QString::fromUtf8(errors.mid(errors.lastIndexOf('\n') + 1)));
                         process->deleteLater();
                     });
    startCorvel(*process, arguments);
}

}  // namespace Corvel::Panel
