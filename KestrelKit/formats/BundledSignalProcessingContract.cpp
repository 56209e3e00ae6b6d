#include <KestrelKit/formats/BundledSignalProcessingContract.h>
#include <KestrelKit/foundation/ResourceBundle.h>
#include <KestrelKit/model/JSONCoders.h>

#include <array>
#include <cstddef>
#include <fstream>
#include <utility>

namespace kestrel {

std::expected<SignalProcessingContract, BundledSignalProcessingContract::Failure>
BundledSignalProcessingContract::load() {
  const ResourceBundle& bundle = ResourceBundle::kestrelKit();
  const auto file = bundle.resource("signal-processing-contract", "json");
  if (!file) {
    return std::unexpected(
        Failure{Fault::noResource, bundle.folder().string() + ": it has no signal-processing-contract.json"});
  }
  std::ifstream stream(*file, std::ios::binary);
  std::string json;
  std::array<char, 16'384> portion{};
  while (stream.read(portion.data(), portion.size()) || stream.gcount() > 0) {
    json.append(portion.data(), static_cast<std::size_t>(stream.gcount()));
  }
  if (!stream.is_open() || stream.bad()) {
    return std::unexpected(Failure{Fault::noResource, file->string() + ": it cannot be read"});
  }
  auto contract = JSONCoders::decoder.decode<SignalProcessingContract>(json);
  if (!contract) {
    return std::unexpected(Failure{Fault::notDecoded, file->string() + ": " + contract.error().text()});
  }
  return *std::move(contract);
}

}  // namespace kestrel
