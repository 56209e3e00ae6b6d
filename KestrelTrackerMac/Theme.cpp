#include <KestrelTrackerMac/Theme.h>

#include <QFontInfo>
#include <QGuiApplication>

#include <algorithm>

namespace kestrel::companion {

Theme::Theme(QObject* parent) : QObject(parent) {
  connect(&appearance_, &Appearance::darkChanged, this, &Theme::darkChanged);
  connect(&appearance_, &Appearance::reduceMotionChanged, this, &Theme::reduceMotionChanged);
}

const Palette& Theme::colors() const {
  static const Palette lightColors = Palette::light();
  static const Palette darkColors = Palette::dark();
  return dark() ? darkColors : lightColors;
}

qreal Theme::body() const {
  // A session without a desktop names no interface font, and Qt's stand-in of 9 points is hard to read.
  static constexpr int smallest = 14;
  return std::max(smallest, QFontInfo{QGuiApplication::font()}.pixelSize());
}

}  // namespace kestrel::companion
