#include <KestrelKit/foundation/FileError.h>
#include <KestrelKit/foundation/QuotedText.h>

namespace kestrel {

std::string FileError::text() const {
  const std::string why = reason == std::errc::illegal_byte_sequence ? "is not UTF-8 text" : reason.message();
  return onOneLine((file.empty() ? "\"\"" : file.string()) + ": " + why);
}

}  // namespace kestrel
