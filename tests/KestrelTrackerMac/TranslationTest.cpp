#include <KestrelTrackerMac/Translation.h>

#include <gtest/gtest.h>
#include <QLocale>
#include <QString>
#include <QStringList>

namespace kestrel::companion {
namespace {

const QString german = QStringLiteral(":/i18n/tidewell_de.qm");

QString tableFor(const QString& languages) { return translationTable(languages.split(u' ')); }

TEST(Translation, takesTheFirstLanguageThatItHas) {
  EXPECT_EQ(tableFor(QStringLiteral("de")), german);
  EXPECT_EQ(tableFor(QStringLiteral("de-AT")), german);
  EXPECT_EQ(tableFor(QStringLiteral("de_CH.UTF-8")), german);
  EXPECT_EQ(tableFor(QStringLiteral("fr-FR fr de-DE en")), german);
}

TEST(Translation, englishBeforeGermanStaysEnglish) {
  EXPECT_EQ(tableFor(QStringLiteral("en-US de")), QString{});
  EXPECT_EQ(tableFor(QStringLiteral("en de")), QString{});
  EXPECT_EQ(tableFor(QStringLiteral("fr-FR en-GB de")), QString{});
}

TEST(Translation, otherLanguagesAndNoneAreEnglish) {
  EXPECT_EQ(tableFor(QStringLiteral("fr-FR fr")), QString{});
  EXPECT_EQ(tableFor(QStringLiteral("C")), QString{});
  EXPECT_EQ(translationTable({}), QString{});
}

}  // namespace
}  // namespace kestrel::companion
