#pragma once

#include <QString>
#include <QStringList>

namespace kestrel::companion {

/// The table of texts for the first of `languages` that the window speaks; `languages` are names such as
/// `de-AT`, the most wanted first. Empty where that is English, the language of the texts themselves, and
/// where it speaks none.
QString translationTable(const QStringList& languages);

}  // namespace kestrel::companion
