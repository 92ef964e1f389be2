#include "host/panel/CorvelProcess.h"

#include <sys/resource.h>

#include <QCoreApplication>
#include <QJsonDocument>
#include <memory>

namespace Corvel::Panel {

namespace {

constexpr int lowerPriority = 5;

/// Says who speaks where several programs share a terminal; a window needs it not.
const QString programPrefix = "corvel: ";

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
                         const QString errors =
                             QString::fromUtf8(process->readAllStandardError()).trimmed().section('\n', -1);
                         told(how == QProcess::NormalExit && code == 0, process->readAllStandardOutput(),
                              errors.mid(errors.startsWith(programPrefix) ? programPrefix.size() : 0));
                         process->deleteLater();
                     });
    startCorvel(*process, arguments);
}

// Asked rather than killed: nothing of theirs is left then.
void endRuns(QObject* owner) {
    for (QProcess* const process : owner->findChildren<QProcess*>(Qt::FindDirectChildrenOnly)) {
        process->disconnect();
        process->terminate();
        process->waitForFinished();
    }
}

}  // namespace Corvel::Panel
