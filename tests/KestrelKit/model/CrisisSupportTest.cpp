#include <KestrelKit/model/CrisisSupport.h>
#include <KestrelKit/model/Disclaimer.h>

#include <gtest/gtest.h>

namespace kestrel {
namespace {

TEST(CrisisSupport, isOfferedInPsychosisAndNotInMania) {
  EXPECT_TRUE(CrisisSupport::shouldOffer(KestrelState::psychosis));
  EXPECT_FALSE(CrisisSupport::shouldOffer(KestrelState::mania));
}

TEST(CrisisSupport, isOfferedInThreeStates) {
  for (const KestrelState state : KestrelState::allCases) {
    EXPECT_EQ(CrisisSupport::shouldOffer(state), state == KestrelState::psychosis ||
                                                     state == KestrelState::mixedEpisode ||
                                                     state == KestrelState::severeDepression)
        << state.rawValue();
  }
}

TEST(CrisisSupport, hasItsTexts) {
  EXPECT_EQ(CrisisSupport::prompt, "If this matches how you're feeling right now, support is available.");
  EXPECT_EQ(CrisisSupport::reassurance,
            "Free, confidential, 24/7. You don't have to be in crisis to reach out.");
  EXPECT_EQ(CrisisSupport::lifelineTitle, "988 Suicide & Crisis Lifeline");
  EXPECT_EQ(CrisisSupport::textLineTitle, "Text HOME to 741741");
  EXPECT_EQ(CrisisSupport::lifelineURL, "tel:988");
  EXPECT_EQ(CrisisSupport::textLineURL, "sms:741741&body=HOME");
  EXPECT_EQ(CrisisSupport::lifelineAccessibilityLabel, "Call or text 988, the Suicide and Crisis Lifeline");
  EXPECT_EQ(CrisisSupport::textLineAccessibilityLabel, "Text HOME to 741741, the Crisis Text Line");
  EXPECT_EQ(CrisisSupport::dismissAccessibilityLabel, "Dismiss crisis resources for today");
  EXPECT_EQ(CrisisSupport::groupAccessibilityLabel, "Crisis support resources");
}

TEST(Disclaimer, hasItsText) {
  EXPECT_EQ(Disclaimer::text,
            "Tidewell is a tracking and personal-insight tool. It is not a medical device, not FDA-cleared, "
            "and not a "
            "substitute for clinical care.");
}

}  // namespace
}  // namespace kestrel
