import QtQuick
import Tidewell

// Why the last scan failed; nothing where it has not.
SymbolLabel {
  visible: text !== ""
  symbol: "exclamationmark.circle"
  color: Theme.colors.red
}
