#include <tidewell-sample-history/SampleHistory.h>

#include "Chance.h"
#include "MessagesSchema.h"
#include "Rhythm.h"
#include "SampleText.h"

#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/SqliteHandles.h>

#include <fmt/format.h>
#include <sqlite3.h>
#include <stdlib.h>  // mkdtemp

#include <algorithm>
#include <array>
#include <cerrno>
#include <concepts>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

constexpr std::string_view account = "e:me@example.com";
constexpr std::string_view accountGuid = "8D2C6E4B-51A7-4F6C-9E08-3B7A1D5F2C90";
constexpr std::string_view ownNumber = "+12015550100";

/// One statement that is run once for each row. Text must live until the call returns.
class Insertion {
 public:
  Insertion(sqlite3* connection, std::string_view sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(connection, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                       &statement, nullptr);
    statement_.reset(statement);
  }

  /// False where SQLite reports an error; the connection knows which.
  template <typename... Values>
  bool operator()(const Values&... values) {
    int column = 0;
    const bool bound = (... && (bind(++column, values) == SQLITE_OK));
    const bool done = bound && sqlite3_step(statement_.get()) == SQLITE_DONE;
    return sqlite3_reset(statement_.get()) == SQLITE_OK && done;
  }

 private:
  int bind(int column, std::string_view text) {
    return sqlite3_bind_text(statement_.get(), column, text.data(), static_cast<int>(text.size()),
                             SQLITE_STATIC);
  }
  int bind(int column, std::integral auto number) {
    return sqlite3_bind_int64(statement_.get(), column, static_cast<sqlite3_int64>(number));
  }
  template <typename Value>
  int bind(int column, const std::optional<Value>& value) {
    return value ? bind(column, *value) : sqlite3_bind_null(statement_.get(), column);
  }

  SqliteStatement statement_;
};

struct Person {
  std::string identifier;  ///< A telephone number or an electronic-mail address.
  std::string_view service;
  std::size_t language;
};

struct Chat {
  std::vector<std::size_t> people;  ///< Indexes of those it is with.
  std::optional<std::string> room;  ///< Absent for a chat with one person.
  std::string_view service;
  std::optional<std::string> lastMessage;  ///< What a reaction is to: the identifier of the latest message.
};

/// The people one writes with, and the chats with them, the most popular first.
struct Circle {
  std::vector<Person> people;
  std::vector<Chat> chats;

  Circle(std::int64_t messages, Chance& chance) {
    constexpr std::array<std::string_view, 12> names{"ada",   "bruno", "carmen", "dmitri", "elif",  "farid",
                                                     "greta", "hana",  "ivo",    "jun",    "kiran", "lena"};
    const auto count = static_cast<std::size_t>(std::clamp<std::int64_t>(messages / 2'000, 24, 400));
    for (std::size_t index = 0; index < count; ++index) {
      const bool byMail = chance.perMille(200);
      people.push_back({byMail ? fmt::format("{}.{}@example.com", names[index % names.size()], index)
                               : fmt::format("+1{}55501{:02}", 202 + index / 100, index % 100),
                        byMail || chance.perMille(750) ? "iMessage"
                        : chance.perMille(300)         ? "RCS"
                                                       : "SMS",
                        index < 2 ? 0 : chance.below(sampleLanguages)});
    }
    for (std::size_t index = 0; index < count; ++index) {
      chats.push_back({{index}, std::nullopt, people[index].service, std::nullopt});
      if (index % 4 == 1) {
        chats.push_back(
            {groupMembers(chance),
             // The index keeps two rooms from having one number.
             fmt::format("chat{}", 100'000'000'000'000'000 + chance.below(1'000'000'000) * 1'000 + index),
             "iMessage", std::nullopt});
      }
    }
  }

  /// A chat by popularity: the further back in the list, the rarer.
  std::size_t someChat(Chance& chance) const {
    return chance.below(1 + chance.below(1 + chance.below(chats.size())));
  }

 private:
  std::vector<std::size_t> groupMembers(Chance& chance) const {
    std::vector<std::size_t> members;
    const auto wanted = static_cast<std::size_t>(chance.between(2, 9));
    while (members.size() < wanted) {
      if (const auto person = chance.below(people.size()); std::ranges::count(members, person) == 0) {
        members.push_back(person);
      }
    }
    return members;
  }
};

/// The text as the system archives it beside `text`, or instead of it: a keyed stream of an attributed
/// string.
std::string attributedBody(std::string_view text) {
  using namespace std::string_view_literals;
  const auto size = static_cast<unsigned>(text.size());
  std::string body(
      "\x04\x0bstreamtyped\x81\xe8\x03\x84\x01@\x84\x84\x84\x12NSAttributedString\x00\x84\x84\x08NSObject"
      "\x00\x85\x92\x84\x84\x84\x08NSString\x01\x94\x84\x01+"sv);
  if (size >= 0x80) {
    body += '\x81';  // The length follows in 16 bits, the lower ones first.
    body += static_cast<char>(size & 0xFF);
    body += static_cast<char>(size >> 8 & 0xFF);
  } else {
    body += static_cast<char>(size);
  }
  body += text;
  body += "\x86\x86"sv;
  return body;
}

bool writeCircle(sqlite3* connection, const Circle& circle, Chance& chance) {
  Insertion handle(connection,
                   "INSERT INTO handle (id, country, service, uncanonicalized_id) VALUES (?, 'us', ?, ?)");
  for (const Person& person : circle.people) {
    if (!handle(person.identifier, person.service, person.identifier)) {
      return false;
    }
  }
  Insertion chat(
      connection,
      "INSERT INTO chat (guid, style, state, account_id, chat_identifier, service_name, room_name, "
      "account_login, last_addressed_handle, display_name, group_id, original_group_id, successful_query) "
      "VALUES (?, ?, 3, ?, ?, ?, ?, ?, ?, ?, ?, ?, 1)");
  Insertion member(connection, "INSERT INTO chat_handle_join (chat_id, handle_id) VALUES (?, ?)");
  Insertion service(connection, "INSERT INTO chat_service (service, chat) VALUES (?, ?)");
  constexpr std::array<std::string_view, 5> titles{"Family", "Sunday climbing", "Book club 📚", "Flat 12", ""};
  constexpr int withOnePerson = 45;
  constexpr int withAGroup = 43;
  for (std::size_t index = 0; index < circle.chats.size(); ++index) {
    const Chat& entry = circle.chats[index];
    const std::string& identifier = entry.room ? *entry.room : circle.people[entry.people.front()].identifier;
    const std::string groupId = chance.uuid();
    const auto title =
        entry.room ? chance.oneOf(std::span<const std::string_view>(titles)) : std::string_view();
    if (!chat(fmt::format("{};{};{}", entry.service, entry.room ? '+' : '-', identifier),
              entry.room ? withAGroup : withOnePerson, accountGuid, identifier, entry.service, entry.room,
              account, ownNumber, title, groupId, groupId) ||
        !service(entry.service, index + 1)) {
      return false;
    }
    for (const std::size_t person : entry.people) {
      if (!member(index + 1, person + 1)) {
        return false;
      }
    }
  }
  return true;
}

bool writeMessages(sqlite3* connection, Circle& circle, const SampleHistory& history, Chance& chance) {
  Insertion message(
      connection,
      "INSERT INTO message (guid, text, handle_id, attributedBody, version, service, account, account_guid, "
      "date, "
      "date_read, date_delivered, is_delivered, is_finished, is_from_me, is_read, is_sent, "
      "cache_has_attachments, "
      "cache_roomnames, associated_message_guid, associated_message_type, destination_caller_id, part_count) "
      "VALUES (?, ?, ?, ?, 10, ?, ?, ?, ?, ?, ?, ?, 1, ?, ?, ?, ?, ?, ?, ?, ?, 1)");
  Insertion membership(connection,
                       "INSERT INTO chat_message_join (chat_id, message_id, message_date) VALUES (?, ?, ?)");
  Insertion attachment(
      connection,
      "INSERT INTO attachment (guid, created_date, filename, uti, mime_type, transfer_state, "
      "is_outgoing, transfer_name, total_bytes, original_guid) "
      "VALUES (?, ?, ?, 'public.jpeg', 'image/jpeg', 5, ?, ?, ?, ?)");
  Insertion attached(connection,
                     "INSERT INTO message_attachment_join (message_id, attachment_id) VALUES (?, ?)");

  const auto times = messageTimes(history, chance);
  constexpr std::int64_t nanoseconds = 1'000'000'000;
  const auto end = static_cast<std::int64_t>(secondsSinceReferenceDate(history.end)) * nanoseconds;
  const std::int64_t olderUntil = end - history.days * 86'400 * nanoseconds / 5 * 4;

  std::size_t current = 0;     // The chat that is being written in.
  std::int64_t leftInRun = 0;  // How many more messages before another one is.
  std::int64_t attachmentCount = 0;
  for (std::size_t index = 0; index < times.size(); ++index) {
    constexpr std::int64_t pause = 2'400 * nanoseconds;
    if (leftInRun == 0 || (index > 0 && times[index] - times[index - 1] > pause)) {
      current = circle.someChat(chance);
      leftInRun = chance.between(1, 12);
    }
    --leftInRun;
    Chat& chat = circle.chats[current];

    const bool sent = chance.perMille(chat.room ? 250 : 480);
    const std::size_t person = chat.people[chance.below(chat.people.size())];
    const std::string guid = chance.uuid();

    std::optional<std::string> text;
    std::optional<std::string> body;
    std::optional<std::string> reactionTo;
    bool hasAttachment = false;
    const std::size_t language = circle.people[person].language;
    if (const auto kind = chance.below(1000); kind < 30) {
      hasAttachment = true;
    } else if (kind < 40) {
      text = "";
    } else if (kind < 50) {
      text = longSampleText(language, chance);
    } else if (kind < 80 && chat.lastMessage) {
      reactionTo = fmt::format("p:0/{}", *chat.lastMessage);
      text = "Loved “…”";
    } else if (kind < 120) {
      body = attributedBody(sampleText(language, chance));
    } else if (kind < 135) {
      hasAttachment = true;
      text = "\uFFFC" + sampleText(language, chance);
    } else {
      text = sampleText(language, chance);
    }

    const bool older = times[index] < olderUntil;
    const auto stamp = [older](std::int64_t time) { return older ? time / nanoseconds : time; };
    const std::int64_t date = stamp(times[index]);
    const std::int64_t delivered = stamp(std::min(times[index] + chance.between(1, 20) * nanoseconds, end));
    const std::int64_t read = stamp(std::min(times[index] + chance.between(20, 7'200) * nanoseconds, end));
    constexpr int loved = 2000;
    constexpr int noReaction = 0;
    const bool unread = !sent && index + 20 > times.size();
    if (!message(guid, text, sent && chat.room ? 0 : person + 1, body, chat.service, account, accountGuid,
                 date, unread ? 0 : read, sent ? delivered : 0, sent, sent, !unread, sent, hasAttachment,
                 chat.room, reactionTo, reactionTo ? loved : noReaction, ownNumber)) {
      return false;
    }
    const auto row = sqlite3_last_insert_rowid(connection);

    const auto membershipKind = chance.below(1000);
    const bool inNone = membershipKind < 10;
    const bool inTwo = membershipKind >= 10 && membershipKind < 22;
    if (!inNone && !membership(current + 1, row, date)) {
      return false;
    }
    if (inTwo && !membership((current + 1 + chance.below(circle.chats.size() - 1)) % circle.chats.size() + 1,
                             row, date)) {
      return false;
    }
    if (hasAttachment) {
      const std::string attachmentGuid = chance.uuid();
      const std::string name = fmt::format("IMG_{:04}.jpeg", ++attachmentCount % 10'000);
      if (!attachment(attachmentGuid, date,
                      fmt::format("~/Library/Messages/Attachments/{}/{}", attachmentGuid, name), sent, name,
                      chance.between(20'000, 4'000'000), attachmentGuid) ||
          !attached(row, attachmentCount)) {
        return false;
      }
    }
    if (!reactionTo) {
      chat.lastMessage = guid;
    }
  }
  return true;
}

bool run(sqlite3* connection, const char* sql) {
  return sqlite3_exec(connection, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

/// Fills the new file at `path`; the connection is closed when it returns. Fails with SQLite's reason.
std::expected<void, std::string> fill(const std::string& path, const SampleHistory& history) {
  sqlite3* opened = nullptr;
  const int code =
      sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  const SqliteConnection connection(opened);
  if (code != SQLITE_OK) {
    return std::unexpected(std::string(sqlite3_errstr(code)));
  }
  Chance chance(history.seed);
  Circle circle(history.messages, chance);
  // Without a journal, because a file that was not finished is thrown away; WAL is switched on for its
  // readers.
  const bool written =
      run(connection.get(),
          "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA cache_size = -200000; BEGIN") &&
      run(connection.get(), messagesTables) &&
      run(connection.get(),
          "INSERT INTO _SqliteDatabaseProperties VALUES ('_ClientVersion', '18026'), ('counter_in_all', "
          "'0')") &&
      writeCircle(connection.get(), circle, chance) &&
      writeMessages(connection.get(), circle, history, chance) && run(connection.get(), messagesIndexes) &&
      run(connection.get(), "COMMIT; PRAGMA journal_mode = WAL");
  if (!written) {
    return std::unexpected(std::string(sqlite3_errmsg(connection.get())));
  }
  return {};
}

void requireItsRanges(const SampleHistory& history) {
  if (history.messages < 0 || history.messages > SampleHistory::mostMessages || history.days < 1 ||
      history.days > SampleHistory::mostDays) {
    programmingError("a sample history has too few or too many messages or days");
  }
  const auto begin = history.end - Seconds(static_cast<double>(history.days) * 86'400);
  if (!(begin >= SampleHistory::earliest && history.end <= SampleHistory::latest)) {
    programmingError("a sample history begins too early or ends too late");
  }
}

}  // namespace

std::expected<void, std::string> writeSampleHistory(const std::filesystem::path& path,
                                                    const SampleHistory& history) {
  requireItsRanges(history);
  const auto failed = [&path](std::string_view why) {
    return std::unexpected(fmt::format("{}: {}", path.string(), why));
  };
  constexpr std::string_view alreadyThere = "it already exists";
  std::error_code error;
  if (path.empty()) {
    return std::unexpected("the path is empty");
  }
  if (std::filesystem::exists(std::filesystem::symlink_status(path, error))) {
    return failed(alreadyThere);
  }
  // A relative path begins with ".", because SQLite would take a name that begins "file:" for a URI.
  std::string folder = ("." / path).string() + ".partial-XXXXXX";
  if (!mkdtemp(folder.data())) {
    return failed(errno == ENOENT ? "its folder does not exist" : std::generic_category().message(errno));
  }
  const auto partial = std::filesystem::path(folder) / "history.db";
  auto result = fill(partial.string(), history);
  if (result) {
    // Not renamed, for that would replace what has come to stand there in the meantime.
    std::filesystem::create_hard_link(partial, path, error);
    if (error) {
      result = std::unexpected(error == std::errc::file_exists ? std::string(alreadyThere) : error.message());
    }
  }
  std::filesystem::remove_all(folder, error);
  if (!result) {
    return failed(result.error());
  }
  return {};
}

}  // namespace kestrel
