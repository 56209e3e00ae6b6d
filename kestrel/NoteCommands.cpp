#include <KestrelKit/analytics/AbsolutismDay.h>
#include <KestrelKit/analytics/BlueskyInsights.h>
#include <KestrelKit/analytics/BlueskySummary.h>
#include <KestrelKit/analytics/HourBucket.h>
#include <KestrelKit/analytics/InteractionDay.h>
#include <KestrelKit/analytics/MoodNoteFeatureExtractor.h>
#include <KestrelKit/formats/VizDay.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/foundation/Utf8.h>
#include <KestrelKit/model/JSONCoders.h>
#include <command-line/InputFile.h>
#include <command-line/Progress.h>
#include <fmt/format.h>
#include <kestrel/JsonCommand.h>
#include <kestrel/NoteCommands.h>

#include <algorithm>
#include <cstddef>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

std::unexpected<Failure> notUtf8(std::string_view what, std::size_t byte) {
  return std::unexpected(
      Failure{ExitStatus::refused, fmt::format("{} is not valid UTF-8 at byte {}", what, byte)});
}

std::expected<std::string, Failure> featuresOfNote(const Command& command, const InputFile& file) {
  const auto text = file.read();
  if (!text) {
    return std::unexpected(text.error());
  }
  if (const auto byte = invalidUtf8(*text)) {
    return notUtf8("the note", *byte);
  }
  return printed(command, MoodNoteFeatureExtractor::features(*text));
}

/// Holds no more of the input than some lines, but all of the output: nothing is printed before all is right.
std::expected<std::string, Failure> featuresOfLines(const InputFile& file) {
  std::string output;
  std::size_t number = 0;
  const auto read = file.readLines([&](std::string_view lines) -> std::expected<void, Failure> {
    const std::size_t valid = invalidUtf8(lines).value_or(lines.size());
    std::vector<MoodNoteFeatures> features;
    for (std::size_t begin = 0; begin < lines.size();) {
      ++number;
      const std::size_t end = std::min(lines.find('\n', begin), lines.size());
      if (valid < end) {
        return notUtf8(fmt::format("line {}", number), valid - begin);
      }
      features.push_back(MoodNoteFeatureExtractor::features(lines.substr(begin, end - begin)));
      begin = end + 1;
    }
    output += JSONCoders::encoder.encodeLines(std::span<const MoodNoteFeatures>(features)).value();
    return {};
  });
  if (!read) {
    return std::unexpected(read.error());
  }
  return output;
}

void addNote(Command& program) {
  Command& command = program.addCommand({
      .name = "note",
      .purpose = "read the mood off a note",
      .details = "Reads plain text in UTF-8, one note, and prints what its words show: "
                 R"({"sentiment", "absolutistRatio", "length"}. The sentiment goes from -1 to 1 and comes )"
                 "from a list of 251 English words, such as good or awful, each turned where one of the "
                 "three words before it is a word like not. The ratio is the share of words like always "
                 "and never among all words, 0 to 1. Web links and handles such as @juno are left out of "
                 "both. The length is that of the whole text, line feed included, in UTF-16 code units."
                 "\n\n"
                 "With --lines every line is a note by itself, without its line feed, and what it shows is "
                 "printed on a line by itself, which --pretty cannot indent. An empty line is a note, too. "
                 "Text that is not valid UTF-8 is refused.",
      .example = "printf 'not good at all' | kestrel note",
      .exampleDoes = "Prints sentiment -0.4973 for good behind not, ratio 0.25 for all, length 15.",
  });
  const auto lines = std::make_shared<bool>(false);
  command.arguments()
      .add_flag("--lines", *lines, "Take every line for a note.")
      ->excludes(program.arguments().get_option("--pretty"));
  const auto file = std::make_shared<InputFile>(command.arguments(), "The text.");
  command.setAction([&command, lines, file] {
    std::optional<Progress> progress;
    if (!file->isTyped()) {  // What a person types must not be written over.
      progress.emplace();
    }
    return *lines ? featuresOfLines(*file) : featuresOfNote(command, *file);
  });
}

/// What `social` prints.
struct SocialInsights {
  BlueskySummary summary{};
  std::vector<HourBucket> hours{};
  std::vector<InteractionDay> interactions{};
  std::vector<AbsolutismDay> absolutism{};

  static JsonFields jsonFields() {
    using R = SocialInsights;
    static constexpr JsonField fields[] = {
        field<&R::summary>("summary"),
        field<&R::hours>("hours"),
        field<&R::interactions>("interactions"),
        field<&R::absolutism>("absolutism"),
    };
    return fields;
  }
};

void addSocial(Command& program) {
  Command& command = program.addCommand({
      .name = "social",
      .purpose = "add up days of social posts",
      .details = R"(Reads a list of days with posts: {"date", "posts", "sentiment", "sentiment_stdev", )"
                 R"("reply_count", "quote_count", "repost_count", "like_count", "follow_count", )"
                 R"("mention_count", "link_count", "hashtag_count", "avg_post_length", "absolutist_rate", )"
                 R"("late_night_posts", "posts_by_hour"}. All but the date may be absent; posts_by_hour )"
                 "has the posts of each hour from midnight on."
                 "\n\n"
                 R"(Prints {"summary", "hours", "interactions", "absolutism"}. The summary is {"days", )"
                 R"("totalPosts", "avgPostsPerDay", "avgPostLength", "absolutismRatePct", "totalReplies", )"
                 R"("totalQuotes", "totalReposts", "totalLikes", "totalFollows", "totalMentions", )"
                 R"("totalLinks", "totalHashtags", "totalLateNightPosts"}, where days are those with a )"
                 R"(post. The hours are 24 {"hour", "posts"}; then come, for each day in the order given, )"
                 R"({"date", "replies", "quotes", "reposts"} and {"date", "absolutismPct"}.)",
      .example = R"(echo '[{"date": "2024-05-01", "posts": 3, "absolutist_rate": 0.04},
  {"date": "2024-05-02", "posts": 1, "absolutist_rate": 0.08}]' |
  kestrel social)",
      .exampleDoes = "Prints four posts on two days, of whose words 5 percent are absolutist: the day with "
                     "three posts counts three times.",
  });
  convertJson<std::vector<VizDay>>(command, "A list of days.", [](const std::vector<VizDay>& days) {
    return SocialInsights{.summary = BlueskyInsights::summary(days),
                          .hours = BlueskyInsights::postsByHour(days),
                          .interactions = BlueskyInsights::interactions(days),
                          .absolutism = BlueskyInsights::absolutism(days)};
  });
}

}  // namespace

void addNoteCommands(Command& program) {
  addNote(program);
  addSocial(program);
}

}  // namespace kestrel
