#include <KestrelKit/foundation/Iso8601.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <KestrelKit/foundation/QuotedText.h>

namespace kestrel {

std::optional<std::string> JsonForm<std::string>::read(JsonReader& value) {
  const auto text = value.text();
  if (!text) {
    return std::nullopt;
  }
  return std::string{*text};
}

std::optional<Instant> JsonForm<Instant>::read(JsonReader& value) {
  if (value.dateStrategy() == DateStrategy::secondsSinceReferenceDate) {
    const auto seconds = value.number();
    if (!seconds) {
      return std::nullopt;
    }
    return instantSinceReferenceDate(*seconds);
  }
  const auto text = value.text();
  if (!text) {
    return std::nullopt;
  }
  const auto instant = instantFromIso8601(*text);
  if (!instant) {
    return value.refuse(quoted(*text) + " is not an instant such as 2024-05-01T08:30:00Z");
  }
  return instant;
}

void JsonForm<Instant>::write(JsonWriter& writer, Instant value) {
  if (writer.dateStrategy() == DateStrategy::secondsSinceReferenceDate) {
    writer.number(secondsSinceReferenceDate(value));
  } else if (const auto text = iso8601Text(value)) {
    writer.text(*text);
  } else {
    writer.refuse("is not an instant of the years 0001 to 9999");
  }
}

std::optional<Uuid> JsonForm<Uuid>::read(JsonReader& value) {
  const auto text = value.text();
  if (!text) {
    return std::nullopt;
  }
  const auto uuid = uuidFromText(*text);
  if (!uuid) {
    return value.refuse(quoted(*text) + " is not a UUID");
  }
  return uuid;
}

void JsonForm<Uuid>::write(JsonWriter& writer, const Uuid& value) { writer.text(uuidText(value)); }

}  // namespace kestrel
