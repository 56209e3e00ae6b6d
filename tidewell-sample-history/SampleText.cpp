#include "SampleText.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace kestrel {
namespace {

using Sentences = std::array<std::string_view, 8>;

constexpr std::array<Sentences, 10> languages{{
    {"On my way.", "Did you get home alright?", "Dinner on Friday? I found a place by the river.",
     "Ha, exactly!", "I'll call you later.", "The train is late again, so start without me.",
     "Thank you so much.", "I was thinking about what you said yesterday, and I think you are right."},
    {"Bin gleich da.", "Bist du gut angekommen?", "Schläfst du schon?",
     "Können wir das auf Dienstag verschieben?", "Ich hab dich lieb.",
     "Die Straßenbahn fährt heute nicht, ich nehme das Fahrrad.", "Danke!", "Na klar."},
    {"Ya voy.", "¿Llegaste bien?", "¿Cenamos el viernes?", "¡Qué risa!", "Te llamo luego.",
     "Muchísimas gracias.", "El tren viene tarde otra vez, empezad sin mí.",
     "He estado pensando en lo que dijiste ayer."},
    {"Уже иду.", "Ты нормально добралась?", "Поужинаем в пятницу?", "Спасибо большое!", "Позвоню позже.",
     "Точно.", "Поезд опять опаздывает, начинайте без меня.", "Спокойной ночи."},
    {"أنا في الطريق.", "هل وصلت بخير؟", "نتعشى يوم الجمعة؟", "شكراً جزيلاً!", "سأتصل بك لاحقاً.", "تمام.",
     "القطار متأخر مرة أخرى، ابدؤوا بدوني.", "تصبح على خير."},
    {"אני בדרך.", "הגעת בשלום?", "ארוחת ערב ביום שישי?", "תודה רבה!", "אתקשר אחר כך.", "בדיוק.",
     "הרכבת שוב מאחרת, תתחילו בלעדיי.", "לילה טוב."},
    {"मैं आ रही हूँ।", "ठीक से पहुँच गए?", "शुक्रवार को खाना खाएँ?", "बहुत धन्यवाद!", "बाद में फ़ोन करती हूँ।", "बिल्कुल।",
     "ट्रेन फिर से देर से है, मेरे बिना शुरू करो।", "शुभ रात्रि।"},
    {"我在路上了。", "你到家了吗？", "星期五一起吃晚饭吧？", "太谢谢你了！", "我晚点打给你。", "没错。",
     "火车又晚点了，你们先开始吧。", "晚安。"},
    {"今向かってるよ。", "無事に着いた？", "金曜日、ごはん行かない？", "ありがとう！", "あとで電話するね。",
     "そうそう。", "また電車が遅れてるから、先に始めてて。", "おやすみ。"},
    {"지금 가는 중이야.", "잘 도착했어?", "금요일에 저녁 먹을래?", "정말 고마워!", "나중에 전화할게.",
     "맞아.", "기차가 또 늦어서 먼저 시작해.", "잘 자."},
}};

// One code point, several, and one with joiners and a skin tone: their lengths differ in every way of
// counting.
constexpr std::array<std::string_view, 8> emoji{"😂",  "❤️", "👍🏽", "👩‍👩‍👧‍👦",
                                                "🇨🇭", "🎉",      "🙈",        "🏳️‍🌈"};

std::string sentences(std::size_t language, std::int64_t count, Chance& chance) {
  std::string text;
  for (std::int64_t sentence = 0; sentence < count; ++sentence) {
    if (sentence > 0) {
      text += ' ';
    }
    text += chance.oneOf(std::span<const std::string_view>(languages[language]));
  }
  return text;
}

}  // namespace

const std::size_t sampleLanguages = languages.size();

std::string sampleText(std::size_t language, Chance& chance) {
  if (chance.perMille(40)) {
    return std::string(chance.oneOf(std::span<const std::string_view>(emoji)));
  }
  std::string text = sentences(language, chance.between(1, chance.perMille(700) ? 1 : 4), chance);
  if (chance.perMille(150)) {
    text += ' ';
    text += chance.oneOf(std::span<const std::string_view>(emoji));
  }
  return text;
}

std::string longSampleText(std::size_t language, Chance& chance) {
  return sentences(language, chance.between(40, 200), chance);
}

}  // namespace kestrel
