#include "host/panel/Preview.h"

#include <QImageReader>
#include <chrono>
#include <utility>

#include "host/panel/CorvelProcess.h"

namespace Corvel::Panel {

namespace {

using namespace std::chrono_literals;

// Large enough for any window; a movie of 8K pixels need not stay in memory whole.
constexpr QSize largest(1920, 1080);

QImage readPicture(const QString& path) {
    QImageReader reader(path);
    if (const QSize size = reader.size();
        size.width() > largest.width() || size.height() > largest.height()) {
        reader.setScaledSize(size.scaled(largest, Qt::KeepAspectRatio));
    }
    return reader.read();
}

}  // namespace

Preview::Preview(Told listener, QObject* parent) : QObject(parent), told(std::move(listener)) {
    settled.setSingleShot(true);
    connect(&settled, &QTimer::timeout, this, [this] { begin(); });
}

Preview::~Preview() {
    endRuns(this);
}

void Preview::encode(const QStringList& arguments) {
    want({arguments, {}});
}

void Preview::open(const QString& movie) {
    want({{}, movie});
}

void Preview::want(const Wish& newWish) {
    wish = newWish;
    settled.start(250ms);
}

void Preview::begin() {
    if (working || !wish) {
        return;
    }
    working = true;
    const Wish now = *std::exchange(wish, std::nullopt);
    if (now.arguments.isEmpty()) {
        make({"render", now.movie, "--frames", "1", "--progress", "none"});
        return;
    }
    make(QStringList{"look"} + now.arguments + QStringList{"--encoded"});
}

void Preview::make(const QStringList& arguments) {
    const QString path = folder.filePath("frame.png");
    const QStringList whole = arguments + QStringList{"-o", path, "-y"};
    runCorvel(this, whole, [this, path](bool done, const QByteArray&, const QString& error) {
        if (done) {
            read(path);
        } else {
            end({}, error);
        }
    });
}

// On a thread of its own: a picture of 8K takes longer to unpack than a window may stand still.
void Preview::read(const QString& path) {
    reader.start([this, path] {
        const QImage picture = readPicture(path);
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the library keeps the call and frees it.
        QMetaObject::invokeMethod(
            this, [this, picture] { end(picture, "the frame could not be shown"); }, Qt::QueuedConnection);
    });
}

void Preview::end(const QImage& picture, const QString& failure) {
    working = false;
    if (wish) {
        begin();
        return;
    }
    told(picture, picture.isNull() ? failure : "");
}

}  // namespace Corvel::Panel
