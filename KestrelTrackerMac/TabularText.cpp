#include <KestrelTrackerMac/TabularText.h>

#include <QFontMetricsF>

#include <algorithm>

namespace kestrel::companion {

namespace {

/// The widest of the ten digits of the script that `digit` belongs to.
qreal widestDigit(QChar digit, const QFontMetricsF& metrics) {
  const auto zero = static_cast<char16_t>(digit.unicode() - digit.digitValue());
  qreal widest = 0;
  for (char16_t value = 0; value < 10; ++value) {
    widest = std::max(widest, metrics.horizontalAdvance(QChar{static_cast<char16_t>(zero + value)}));
  }
  return widest;
}

}  // namespace

QString TabularText::markup(const QString& text, const QFont& font) const {
  const QFontMetricsF metrics{font};
  QString result;
  for (const QChar character : text) {
    const QString escaped = QString{character}.toHtmlEscaped();
    const qreal missing =
        character.isDigit() ? widestDigit(character, metrics) - metrics.horizontalAdvance(character) : 0;
    // A narrow digit is widened on its right: spacing is added after a glyph, and one element a character is enough.
    result += missing > 0 ? QStringLiteral("<span style=\"letter-spacing:%1px\">%2</span>").arg(missing).arg(escaped)
                          : escaped;
  }
  return result;
}

qreal TabularText::width(const QString& text, const QFont& font) const {
  const QFontMetricsF metrics{font};
  qreal width = 0;
  for (const QChar character : text) {
    width += character.isDigit() ? widestDigit(character, metrics) : metrics.horizontalAdvance(character);
  }
  return width;
}

}  // namespace kestrel::companion
