#pragma once

#include <KestrelKit/foundation/QuotedText.h>
#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace kestrel {

/// Adds to `app` the option `name` with one value. `parse` turns its text into `value`, or gives nothing for
/// a text that is wrong use: the error line then says that it is not `expected`, for instance "a whole
/// number". `value` must outlive the parsing.
template <typename Value, typename Parse>
CLI::Option* addValueOption(CLI::App& app, const std::string& name, std::optional<Value>& value, Parse parse,
                            const std::string& expected, const std::string& description) {
  return app.add_option(
      name,
      [name, expected, parse, &value](const CLI::results_t& words) {
        value = parse(words.front());
        if (!value) {
          throw CLI::ValidationError(name, kestrel::quoted(words.front()) + " is not " + expected);
        }
        return true;
      },
      description);
}

}  // namespace kestrel
