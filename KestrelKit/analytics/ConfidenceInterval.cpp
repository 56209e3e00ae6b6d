#include <KestrelKit/analytics/ConfidenceInterval.h>

#include <vector>

namespace kestrel {

using Ends = std::vector<double>;

std::optional<ConfidenceInterval> JsonForm<ConfidenceInterval>::read(JsonReader& value) {
  const auto ends = JsonForm<Ends>::read(value);
  if (!ends) {
    return std::nullopt;
  }
  if (ends->size() != 2 || ends->front() > ends->back()) {
    return value.refuse("is not a list of a lower and an upper end");
  }
  return ConfidenceInterval{.lower = ends->front(), .upper = ends->back()};
}

void JsonForm<ConfidenceInterval>::write(JsonWriter& writer, const ConfidenceInterval& interval) {
  JsonForm<Ends>::write(writer, {interval.lower, interval.upper});
}

}  // namespace kestrel
