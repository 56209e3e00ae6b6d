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

/// The space on either side of `character` in its cell.
qreal sideSpace(QChar character, const QFontMetricsF& metrics) {
  return character.isDigit() ? (widestDigit(character, metrics) - metrics.horizontalAdvance(character)) / 2
                             : 0;
}

}  // namespace

// Space can be added only after a character, so that a digit at the very start has none before it.

QString TabularText::markup(const QString& text, const QFont& font) const {
  const QFontMetricsF metrics{font};
  QString result;
  for (qsizetype index = 0; index < text.size(); ++index) {
    const qreal ofNext = index + 1 < text.size() ? sideSpace(text[index + 1], metrics) : 0;
    const qreal space = sideSpace(text[index], metrics) + ofNext;
    const QString character = QString{text[index]}.toHtmlEscaped();
    result += space > 0
                  ? QStringLiteral("<span style=\"letter-spacing:%1px\">%2</span>").arg(space).arg(character)
                  : character;
  }
  return result;
}

qreal TabularText::width(const QString& text, const QFont& font) const {
  const QFontMetricsF metrics{font};
  qreal width = text.isEmpty() ? 0 : -sideSpace(text.front(), metrics);
  for (const QChar character : text) {
    width += metrics.horizontalAdvance(character) + 2 * sideSpace(character, metrics);
  }
  return width;
}

}  // namespace kestrel::companion
