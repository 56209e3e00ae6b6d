#include <KestrelTrackerMac/Palette.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace kestrel::companion {

namespace {

/// The named colours of one scheme, before they are made legible.
struct NamedColors {
  QRgb blue, pink, red, orange, green, gray;
};

constexpr NamedColors lightColors{0xff007aff, 0xffff2d55, 0xffff3b30, 0xffff9500, 0xff28cd41, 0xff8e8e93};
constexpr NamedColors darkColors{0xff0a84ff, 0xffff375f, 0xffff453a, 0xffff9f0a, 0xff32d74b, 0xff98989d};

constexpr double leastContrast = 4.5;

QColor mixed(const QColor& over, double opacity, const QColor& beneath) {
  const auto channel = [opacity](int top, int bottom) {
    return static_cast<int>(std::lround(opacity * top + (1 - opacity) * bottom));
  };
  return {channel(over.red(), beneath.red()), channel(over.green(), beneath.green()),
          channel(over.blue(), beneath.blue())};
}

/// `color`, mixed with as much of `extreme` (black or white) as it takes to be read on each of `surfaces`.
QColor legible(const QColor& color, const QColor& extreme, std::initializer_list<QColor> surfaces) {
  static constexpr int steps = 100;
  for (int step = 0; step < steps; ++step) {
    const QColor candidate = mixed(extreme, static_cast<double>(step) / steps, color);
    const bool readable = std::ranges::all_of(
        surfaces, [&](const QColor& surface) { return contrastRatio(candidate, surface) >= leastContrast; });
    if (readable) {
      return candidate;
    }
  }
  return extreme;
}

/// Completes the surfaces and texts of `palette` with what follows from the named colours.
Palette withColors(Palette palette, const NamedColors& named, const QColor& extreme, double capsuleOpacity) {
  const QColor blue{named.blue};
  const QColor white{Qt::white};

  palette.badge = mixed(blue, 0.14, palette.page);
  palette.secondaryText =
      legible(palette.secondaryText, extreme, {palette.page, palette.box, palette.tile, palette.track});
  palette.badgeSecondaryText = legible(palette.secondaryText, extreme, {palette.badge});
  palette.badgeBlue = legible(blue, extreme, {palette.badge});
  palette.tint = blue;
  palette.prominentText = white;
  palette.prominent = legible(blue, Qt::black, {white});
  palette.prominentPressed = mixed(Qt::black, 0.15, palette.prominent);
  palette.red = legible(QColor{named.red}, extreme, {palette.box});
  palette.pink = legible(QColor{named.pink}, extreme, {palette.box});

  const auto capsule = [&](const QColor& tint, QColor& text, QColor& fill) {
    fill = mixed(tint, capsuleOpacity, palette.box);
    text = legible(tint, extreme, {fill});
  };
  capsule(QColor{named.gray}, palette.checkingText, palette.checkingFill);
  capsule(QColor{named.green}, palette.readyText, palette.readyFill);
  capsule(QColor{named.orange}, palette.permissionText, palette.permissionFill);
  capsule(QColor{named.red}, palette.unavailableText, palette.unavailableFill);
  return palette;
}

double linear(double channel) {
  return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

}  // namespace

Palette Palette::light() {
  Palette palette;
  palette.page = QColor{0xf5, 0xf5, 0xf7};
  palette.box = QColor{0xff, 0xff, 0xff};
  palette.tile = QColor{0xf4, 0xf4, 0xf6};
  palette.line = QColor{0xe3, 0xe3, 0xe6};
  palette.controlLine = QColor{0xc9, 0xc9, 0xce};
  palette.track = QColor{0xe8, 0xe8, 0xec};
  palette.segment = QColor{0xff, 0xff, 0xff};
  palette.text = QColor{0x1d, 0x1d, 0x1f};
  palette.secondaryText = QColor{0x6e, 0x6e, 0x73};
  return withColors(palette, lightColors, Qt::black, 0.16);
}

Palette Palette::dark() {
  Palette palette;
  palette.page = QColor{0x1e, 0x1e, 0x20};
  palette.box = QColor{0x2a, 0x2a, 0x2c};
  palette.tile = QColor{0x36, 0x36, 0x3a};
  palette.line = QColor{0x3d, 0x3d, 0x41};
  palette.controlLine = QColor{0x54, 0x54, 0x59};
  palette.track = QColor{0x3a, 0x3a, 0x3e};
  palette.segment = QColor{0x63, 0x63, 0x66};
  palette.text = QColor{0xf5, 0xf5, 0xf7};
  palette.secondaryText = QColor{0x9a, 0x9a, 0x9f};
  return withColors(palette, darkColors, Qt::white, 0.22);
}

double contrastRatio(const QColor& first, const QColor& second) {
  const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
  return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace kestrel::companion
