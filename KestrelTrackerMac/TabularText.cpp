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
  const auto missing = [&](qsizetype index) {
    const QChar character = text[index];
    return character.isDigit() ? widestDigit(character, metrics) - metrics.horizontalAdvance(character) : 0;
  };
  QString result;
  for (qsizetype index = 0; index < text.size(); ++index) {
    // A digit stands in the middle of its cell, the first character at the start: space can be added only after one.
    const qreal after = index == 0 ? missing(index) : missing(index) / 2;
    const qreal before = index + 1 < text.size() ? missing(index + 1) / 2 : 0;
    const QString character = QString{text[index]}.toHtmlEscaped();
    result += after + before > 0 ? QStringLiteral("<span style=\"letter-spacing:%1px\">%2</span>").arg(after + before).arg(character)
                                 : character;
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
