#include <KestrelTrackerMac/TabularText.h>

#include <QFont>
#include <QTextDocument>
#include <gtest/gtest.h>

namespace kestrel::companion {
namespace {

// A font whose digits differ in width, as Inter's do.
QFont proportional() {
  QFont font{QStringLiteral("Inter")};
  font.setPixelSize(28);
  font.setWeight(QFont::Bold);
  return font;
}

qreal laidOutWidth(const QString& markup, const QFont& font) {
  QTextDocument document;
  document.setDocumentMargin(0);
  document.setDefaultFont(font);
  document.setHtml(markup);
  return document.idealWidth();
}

TEST(TabularText, everyDigitTakesTheSameWidth) {
  const TabularText tabular;
  const QFont font = proportional();
  const qreal expected = laidOutWidth(tabular.markup(QStringLiteral("0000"), font), font);
  for (char16_t digit = u'1'; digit <= u'9'; ++digit) {
    EXPECT_NEAR(laidOutWidth(tabular.markup(QString{4, QChar{digit}}, font), font), expected, 1.0)
        << static_cast<char>(digit);
  }
}

TEST(TabularText, theWidthIsThatOfTheMarkup) {
  const TabularText tabular;
  const QFont font = proportional();
  for (const QString& text : {QStringLiteral("1"), QStringLiteral("1,111,111"), QStringLiteral("41 sent · 63 received")}) {
    EXPECT_NEAR(tabular.width(text, font), laidOutWidth(tabular.markup(text, font), font),
                static_cast<qreal>(text.size()))
        << text.toStdString();
  }
}

TEST(TabularText, whatMarkupTakesAsItsOwnIsShown) {
  const TabularText tabular;
  QTextDocument document;
  document.setHtml(tabular.markup(QStringLiteral("1 <b>&amp; 2"), proportional()));
  EXPECT_EQ(document.toPlainText(), QStringLiteral("1 <b>&amp; 2"));
}

}  // namespace
}  // namespace kestrel::companion
