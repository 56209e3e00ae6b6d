#pragma once

#include <boost/uuid/uuid.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

/// A universally unique identifier, RFC 4122.
using Uuid = boost::uuids::uuid;

/// `uuid` in the form 8-4-4-4-12, in upper case.
std::string uuidText(const Uuid& uuid);

/// The identifier that `text` names, in the form 8-4-4-4-12 and either case; absent for any other form.
std::optional<Uuid> uuidFromText(std::string_view text) noexcept;

}  // namespace kestrel
