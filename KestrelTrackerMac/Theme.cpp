#include <KestrelTrackerMac/Theme.h>

#include <QFontInfo>
#include <QGuiApplication>

#include <algorithm>

namespace kestrel::companion {

void Theme::setDark(bool dark) {
  if (dark_ != dark) {
    dark_ = dark;
    Q_EMIT darkChanged();
  }
}

void Theme::setReduceMotion(bool reduceMotion) {
  if (reduceMotion_ != reduceMotion) {
    reduceMotion_ = reduceMotion;
    Q_EMIT reduceMotionChanged();
  }
}

const Palette& Theme::colors() const {
  static const Palette light = Palette::light();
  static const Palette dark = Palette::dark();
  return dark_ ? dark : light;
}

qreal Theme::body() const {
  // A session without a desktop names no interface font, and Qt's stand-in of 9 points is hard to read.
  static constexpr int smallest = 14;
  return std::max(smallest, QFontInfo{QGuiApplication::font()}.pixelSize());
}

}  // namespace kestrel::companion
