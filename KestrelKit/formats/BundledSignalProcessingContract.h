#pragma once

#include <KestrelKit/formats/SignalProcessingContract.h>

#include <cstdint>
#include <expected>
#include <string>

namespace kestrel {

/// The contract that travels with the library: the resource `signal-processing-contract.json` of its bundle.
struct BundledSignalProcessingContract {
  BundledSignalProcessingContract() = delete;

  enum class Fault : std::uint8_t {
    noResource,  ///< The bundle has no such resource, or it cannot be read.
    notDecoded,  ///< The resource is no contract.
  };

  struct Failure {
    Fault fault = Fault::noResource;
    std::string message{};  ///< What is wrong, with the path of the file, in one line.
  };

  /// Reads it; each call anew. A missing bundle is a programming error, see ResourceBundle::kestrelKit().
  [[nodiscard]] static std::expected<SignalProcessingContract, Failure> load();
};

}  // namespace kestrel
