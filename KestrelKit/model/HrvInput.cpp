#include <KestrelKit/model/HrvInput.h>

namespace kestrel {

std::optional<HrvInput> JsonForm<HrvInput>::read(JsonReader& value) {
  if (value.null()) {
    return HrvInput::missing;
  }
  const auto number = value.number();
  if (!number) {
    return std::nullopt;
  }
  return HrvInput::measured(*number);
}

void JsonForm<HrvInput>::write(JsonWriter& writer, const HrvInput& input) {
  if (const auto number = input.value()) {
    writer.number(*number);
  } else {
    writer.null();
  }
}

}  // namespace kestrel
