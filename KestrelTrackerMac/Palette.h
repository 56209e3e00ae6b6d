#pragma once

#include <QColor>
#include <QObject>
#include <QtQmlIntegration>

namespace kestrel::companion {

/// The colours of one scheme by their roles. Every text and symbol has a contrast of at least 4.5 to 1 on
/// each surface that it stands on.
class Palette {
  Q_GADGET
  QML_VALUE_TYPE(palette)
  Q_PROPERTY(QColor page MEMBER page)
  Q_PROPERTY(QColor box MEMBER box)
  Q_PROPERTY(QColor tile MEMBER tile)
  Q_PROPERTY(QColor line MEMBER line)
  Q_PROPERTY(QColor controlLine MEMBER controlLine)
  Q_PROPERTY(QColor badge MEMBER badge)
  Q_PROPERTY(QColor track MEMBER track)
  Q_PROPERTY(QColor segment MEMBER segment)
  Q_PROPERTY(QColor text MEMBER text)
  Q_PROPERTY(QColor secondaryText MEMBER secondaryText)
  Q_PROPERTY(QColor badgeSecondaryText MEMBER badgeSecondaryText)
  Q_PROPERTY(QColor badgeBlue MEMBER badgeBlue)
  Q_PROPERTY(QColor tint MEMBER tint)
  Q_PROPERTY(QColor prominent MEMBER prominent)
  Q_PROPERTY(QColor prominentPressed MEMBER prominentPressed)
  Q_PROPERTY(QColor prominentText MEMBER prominentText)
  Q_PROPERTY(QColor red MEMBER red)
  Q_PROPERTY(QColor pink MEMBER pink)
  Q_PROPERTY(QColor checkingText MEMBER checkingText)
  Q_PROPERTY(QColor checkingFill MEMBER checkingFill)
  Q_PROPERTY(QColor readyText MEMBER readyText)
  Q_PROPERTY(QColor readyFill MEMBER readyFill)
  Q_PROPERTY(QColor permissionText MEMBER permissionText)
  Q_PROPERTY(QColor permissionFill MEMBER permissionFill)
  Q_PROPERTY(QColor unavailableText MEMBER unavailableText)
  Q_PROPERTY(QColor unavailableFill MEMBER unavailableFill)

 public:
  static Palette light();
  static Palette dark();

  QColor page;         ///< Behind everything; also the menu bar.
  QColor box;          ///< A box, and a menu.
  QColor tile;         ///< A metric tile, and a bordered button; both lie in a box.
  QColor line;         ///< Hairlines, and the border of a box.
  QColor controlLine;  ///< The border of a bordered button.
  QColor badge;        ///< The local badge: blue at opacity 0.14 over the page.
  QColor track;        ///< Behind the segments of the picker.
  QColor segment;      ///< The chosen segment.

  QColor text;                ///< On every surface but the prominent button.
  QColor secondaryText;       ///< On page, box, tile and track.
  QColor badgeSecondaryText;  ///< On the badge.
  QColor badgeBlue;           ///< Blue on the badge.
  QColor tint;                ///< The focus ring and the progress indicator.
  QColor prominent;           ///< The prominent button.
  QColor prominentPressed;    ///< The prominent button while it is held down.
  QColor prominentText;       ///< On the prominent button.
  QColor red;                 ///< On a box.
  QColor pink;                ///< On a box.

  QColor checkingText;     ///< The capsule's text on its fill, and so on for each access state.
  QColor checkingFill;     ///< The tint at reduced opacity over a box.
  QColor readyText;        ///< See `checkingText`.
  QColor readyFill;        ///< See `checkingFill`.
  QColor permissionText;   ///< See `checkingText`.
  QColor permissionFill;   ///< See `checkingFill`.
  QColor unavailableText;  ///< See `checkingText`.
  QColor unavailableFill;  ///< See `checkingFill`.

  bool operator==(const Palette&) const = default;
};

/// The contrast of two opaque colours, 1 to 21: (L₁ + 0.05) / (L₂ + 0.05) with the relative luminances of the
/// Web Content Accessibility Guidelines 2.1, the lighter first.
double contrastRatio(const QColor& first, const QColor& second);

}  // namespace kestrel::companion
