#include "host/panel/PictureView.h"

#include <QPainter>
#include <algorithm>

namespace Corvel::Panel {

namespace {

constexpr int square = 8;

// Grey in light and dark alike: colours are judged beside it.
const QColor surroundings(28, 28, 28);

}  // namespace

PictureView::PictureView(QWidget* parent) : QWidget(parent) {
    setMinimumSize(240, 135);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void PictureView::show(const QImage& shown, double pixelAspect) {
    picture = shown;
    scaled = {};
    aspect = pixelAspect > 0 ? pixelAspect : 1;
    text.clear();
    update();
}

void PictureView::say(const QString& words) {
    text = words;
    update();
}

QRect PictureView::placeOfPicture() const {
    QSizeF wanted(picture.width() * aspect, picture.height());
    wanted.scale(size(), Qt::KeepAspectRatio);
    const QSize whole = wanted.toSize();
    return {(width() - whole.width()) / 2, (height() - whole.height()) / 2, whole.width(), whole.height()};
}

void PictureView::scalePicture(const QSize& pixels) {
    if (scaled.size() != pixels) {
        scaled = QPixmap::fromImage(picture.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        scaled.setDevicePixelRatio(devicePixelRatio());
    }
}

void PictureView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), surroundings);
    if (!picture.isNull()) {
        const QRect place = placeOfPicture();
        if (picture.hasAlphaChannel()) {
            painter.fillRect(place, QColor(150, 150, 150));
            for (int y = 0; y < place.height(); y += square) {
                for (int x = (y / square) % 2 * square; x < place.width(); x += 2 * square) {
                    painter.fillRect(QRect(place.x() + x, place.y() + y, square, square).intersected(place),
                                     QColor(110, 110, 110));
                }
            }
        }
        scalePicture(place.size() * devicePixelRatio());
        painter.drawPixmap(place.topLeft(), scaled);
    }
    if (!text.isEmpty()) {
        painter.setPen(Qt::white);
        painter.drawText(rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap, text);
    }
}

}  // namespace Corvel::Panel
