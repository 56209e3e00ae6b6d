#pragma once

namespace kestrel {

/// The tables of a Messages database of a current release.
extern const char* const messagesTables;

/// Its indexes, apart from the tables because filling an indexed table takes several times as long.
extern const char* const messagesIndexes;

}  // namespace kestrel
