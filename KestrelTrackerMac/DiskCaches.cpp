#include <KestrelTrackerMac/DiskCaches.h>

#include <QByteArray>
#include <QCoreApplication>

#include <array>
#include <utility>

namespace kestrel::companion {

void switchOffDiskCaches() {
  QCoreApplication::setAttribute(Qt::AA_DisableShaderDiskCache);
  static constexpr std::array switches{
      std::pair{"QML_DISABLE_DISK_CACHE", "1"},        // compiled views
      std::pair{"QSG_RHI_DISABLE_DISK_CACHE", "1"},    // pipelines, from Qt 6.5 on
      std::pair{"MESA_SHADER_CACHE_DISABLE", "true"},  // finds a home folder even where $HOME names none
      std::pair{"__GL_SHADER_DISK_CACHE", "0"},        // NVIDIA's driver
  };
  for (const auto& [name, value] : switches) {
    qputenv(name, value);
  }
  // Where these name a file, Qt writes the pipelines that it made there.
  qunsetenv("QSG_RHI_PIPELINE_CACHE_SAVE");
}

}  // namespace kestrel::companion
