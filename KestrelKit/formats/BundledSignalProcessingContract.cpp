#include <KestrelKit/formats/BundledSignalProcessingContract.h>
#include <KestrelKit/foundation/ResourceBundle.h>
#include <KestrelKit/model/JSONCoders.h>

#include <fstream>
#include <sstream>
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
  const std::ifstream stream(*file, std::ios::binary);
  std::ostringstream json;
  json << stream.rdbuf();
  if (!stream.is_open() || json.bad()) {
    return std::unexpected(Failure{Fault::noResource, file->string() + ": it cannot be read"});
  }
  auto contract = JSONCoders::decoder.decode<SignalProcessingContract>(json.view());
  if (!contract) {
    return std::unexpected(Failure{Fault::notDecoded, file->string() + ": " + contract.error().text()});
  }
  return *std::move(contract);
}

}  // namespace kestrel
