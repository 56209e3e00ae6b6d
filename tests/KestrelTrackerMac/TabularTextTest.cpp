#include <KestrelTrackerMac/TabularText.h>

#include <gtest/gtest.h>
#include <QFont>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

#include <vector>

namespace kestrel::companion {
namespace {

// A font whose digits differ in width, as Inter's do.
QFont proportional() {
  QFont font{QStringLiteral("Inter")};
  font.setPixelSize(28);
  font.setWeight(QFont::Bold);
  font.setKerning(false);
  return font;
}

qreal laidOutWidth(const QString& markup, const QFont& font) {
  QTextDocument document;
  document.setDocumentMargin(0);
  document.setDefaultFont(font);
  document.setHtml(markup);
  return document.idealWidth();
}

/// Where each character of the laid out `markup` begins.
std::vector<qreal> places(const QString& markup, const QFont& font) {
  QTextDocument document;
  document.setDocumentMargin(0);
  document.setDefaultFont(font);
  document.setHtml(markup);
  document.setTextWidth(-1);
  document.size();  // lays it out
  const QTextBlock block = document.firstBlock();
  std::vector<qreal> result;
  for (int index = 0; index < block.length(); ++index) {
    result.push_back(block.layout()->lineAt(0).cursorToX(index));
  }
  return result;
}

TEST(TabularText, everyDigitTakesTheSameWidthAlsoTheFirst) {
  const TabularText tabular;
  const QFont font = proportional();
  const std::vector<qreal> zeros = places(tabular.markup(QStringLiteral("000"), font), font);
  const qreal cell = zeros[1] - zeros[0];
  for (char16_t digit = u'0'; digit <= u'9'; ++digit) {
    const std::vector<qreal> found = places(tabular.markup(QString{3, QChar{digit}}, font), font);
    EXPECT_NEAR(found[1] - found[0], cell, 0.5) << static_cast<char>(digit);
    EXPECT_NEAR(found[2] - found[1], cell, 0.5) << static_cast<char>(digit);
  }
}

TEST(TabularText, digitsOfLaterPlacesStandUnderEachOther) {
  const TabularText tabular;
  const QFont font = proportional();
  const auto fromTheRight = [&](const QString& text) {
    const std::vector<qreal> found = places(tabular.markup(text, font), font);
    return found.back() - found[2];
  };
  EXPECT_NEAR(fromTheRight(QStringLiteral("1,111,111")), fromTheRight(QStringLiteral("8,888,888")),
              0.5 * 6);  // of six digits
}

TEST(TabularText, theWidthIsThatOfTheMarkup) {
  const TabularText tabular;
  const QFont font = proportional();
  for (const QString& text :
       {QStringLiteral("1"), QStringLiteral("1,111,111"), QStringLiteral("41 sent · 63 received")}) {
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
