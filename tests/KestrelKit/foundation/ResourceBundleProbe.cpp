#include "ResourceBundleProbe.h"

#include <KestrelKit/foundation/ResourceBundle.h>

#include <cstdio>
#include <filesystem>

void printResourceBundle(const char* removed) {
  std::puts(kestrel::ResourceBundle::kestrelKit().folder().c_str());
  if (removed != nullptr) {
    std::filesystem::remove_all(removed);
  }
  const auto& bundle = kestrel::ResourceBundle::kestrelKit();
  std::puts(bundle.folder().c_str());
  const auto resource = bundle.resource("sample", "json");
  std::puts(resource ? resource->c_str() : "none");
}
