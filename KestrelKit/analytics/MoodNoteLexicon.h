#pragma once

#include <string_view>

namespace kestrel {

/// The words that MoodNoteFeatureExtractor knows, in lower case, one blank between two. Every other word
/// counts, but says nothing.
struct MoodNoteLexicon {
  MoodNoteLexicon() = delete;

  struct ScoredWords {
    int score;  ///< From -4, the worst, to +5, the best.
    std::string_view words;
  };

  /// How pleasant a word is.
  static constexpr ScoredWords scored[] = {
      {+5, "superb thrilled"},
      {+4,
       "amazing awesome blissful brilliant ecstatic fabulous fantastic hooray incredible magnificent "
       "marvelous outstanding stunning terrific triumph win winner winning wonderful wow yay"},
      {+3,
       "adore beautiful best blessed celebrate celebrated cheerful congratulations delight delighted "
       "excellent excited exciting fun glad glorious good gorgeous grateful great happiness happy hilarious "
       "impressed impressive joy joyful love loved lovely loves loving lucky nice perfect pleasant pleased "
       "splendid succeed successful super vibrant victory won"},
      {+2,
       "appreciate appreciated better calm comfort comfortable confident congrats cute eager energetic "
       "energized enjoy enjoyed enjoying favorite fond friendly funny generous healthy helpful hope hopeful "
       "inspired inspiring interesting kind laugh laughed laughing motivated optimistic peaceful positive "
       "proud refreshed relaxed relieved rested satisfied smile smiling strong success sweet thank thankful "
       "thanks welcome"},
      {+1, "cool warm yes"},
      {-1, "broken cry doubt empty numb sorry"},
      {-2,
       "abandoned afraid alone annoyed annoying anxiety anxious ashamed bitter bleak burden crash cried "
       "cries crying damn depressed depressing devastated disappointed disappointing disaster distress doom "
       "drained dread exhausted exhausting fail failed failure fear fearful fired frustrated frustrating "
       "grief helpless hopeless hurt hurts insomnia irritable lonely misery mistake mourning nervous "
       "overwhelmed pain painful pathetic pointless poor problem problems rage regret restless ruined sad "
       "sadness scared shame sick sleepless sorrow stress stressed struggle struggling stuck suffer "
       "suffering suicidal tired trouble unhappy upset useless weary weep worthless wrong"},
      {-3,
       "agitated agony anger angry apathetic awful bad crap dead despair desperate die disgust disgusting "
       "dreadful dying furious guilt guilty hate hated hates hating horrible irritated lose losing loss lost "
       "mad miserable nightmare panic terrible terrified ugly worried worry worse worst"},
      {-4, "hell"},
  };

  /// Words that turn a scored word that follows them.
  static constexpr std::string_view negators =
      "no not never none nobody nothing neither nor cannot can't cant won't wont don't dont doesn't doesnt "
      "didn't didnt isn't isnt wasn't wasnt aren't arent ain't aint couldn't couldnt shouldn't shouldnt "
      "wouldn't wouldnt haven't havent hasn't hasnt without";

  /// Words that leave no room for anything between all and nothing.
  static constexpr std::string_view absolutists =
      "absolutely all always complete completely constant constantly definitely entire entirely ever every "
      "everyone everything full must never nobody none nothing totally whole";
};

}  // namespace kestrel
