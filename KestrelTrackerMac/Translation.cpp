#include <KestrelTrackerMac/Translation.h>

#include <QFile>
#include <QLocale>

namespace kestrel::companion {

// Handed the locale itself, QTranslator looks through all the languages for a table, and passes over English
// on the way, which has none.
QString translationTable(const QStringList& languages) {
  for (const QString& name : languages) {
    const QLocale::Language language = QLocale{name}.language();
    if (language == QLocale::English) {
      break;
    }
    const QString table = QStringLiteral(":/i18n/tidewell_%1.qm").arg(QLocale::languageToCode(language));
    if (QFile::exists(table)) {
      return table;
    }
  }
  return {};
}

}  // namespace kestrel::companion
