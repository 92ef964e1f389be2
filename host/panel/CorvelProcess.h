#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <functional>

namespace Corvel::Panel {

/// Lines of a process's output, whole ones only.
class Lines {
public:
    /// `line` is called for each line that the added bytes complete, without its end.
    void add(const QByteArray& bytes, const std::function<void(const QByteArray&)>& line);

private:
    QByteArray unfinished;
};

/// Makes `process` one of the bundle's corvel with those arguments and starts it, at a lower priority than
/// the window's own, so that the window stays quick on a machine that is busy rendering.
void startCorvel(QProcess& process, const QStringList& arguments);

/// Runs corvel and tells its standard output and the text of its last error when it has ended. Belongs to
/// `owner`, whose destructor calls `endRuns`.
void runCorvel(QObject* owner, const QStringList& arguments,
               const std::function<void(bool done, const QByteArray& output, const QString& error)>& told);

/// Asks what `runCorvel` has running for `owner` to end and waits for that; nobody is told.
void endRuns(QObject* owner);

/// A message as corvel writes it with `--progress json`.
struct Message {
    QString level;  ///< "error", "warning" or "info"
    QString text;
};

/// The message in an event, or in a line that is none; an empty text where the event is no message.
Message messageOf(const QByteArray& line, const QJsonObject& event);

}  // namespace Corvel::Panel
