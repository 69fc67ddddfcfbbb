// SPDX-License-Identifier: MIT

// Sentences written for the benchmark.

#include "bench/utf_texts.h"

#include <random>
#include <vector>

#include "bench/inputs.h"

namespace vekch_bench {
namespace {

using Sentences = std::vector<std::string>;

const Sentences kLatin = {
    "Le café du coin ouvre à sept heures, été comme hiver, et l'odeur du pain grillé descend "
    "jusqu'à la rue. ",
    "Où étiez-vous hier soir ? Nous avons attendu près de la fenêtre, puis le train de vingt "
    "heures est passé. ",
    "Die Brücke über den Fluß wurde früher täglich geöffnet; heute fahren nur noch größere Schiffe "
    "hindurch. ",
    "Schöne Grüße aus München: das Wetter ist mäßig, die Äpfel sind süß, und morgen fährt Jörg "
    "nach Köln. ",
    "El niño compró una piñata pequeña y corrió por el jardín detrás de la casa de su tía Begoña. ",
    "¿Cuándo llegará el camión con los árboles? Mañana, quizás, si la carretera está limpia. ",
    "På øen bor der få mennesker, men færgen sejler hver dag året rundt, også når det blæser. ",
    "Não há pressa: a canção começa às nove e o coração da cidade já está cheio de gente. ",
};

const Sentences kCyrillic = {
    "Утром над рекой поднялся туман, и лодки у причала стали похожи на серые тени. ",
    "Бабушка поставила чайник, открыла окно и долго слушала, как во дворе шумят старые липы. ",
    "В 1987 году дорогу расширили, но поезд по-прежнему останавливается здесь дважды в день. ",
    "Мы шли медленно: снег был глубоким, а до деревни оставалось ещё около трёх километров. ",
    "Книга лежала на столе, раскрытая посередине; кто-то подчеркнул карандашом одно слово. ",
    "Если завтра не будет дождя, дети поедут на озеро, а вечером вернутся с полной корзиной "
    "грибов. ",
    "Он спросил, сколько стоит билет, и, не дожидаясь ответа, положил на прилавок две монеты. ",
    "Погода меняется быстро! Ещё вчера светило солнце, а сегодня ветер срывает последние листья. ",
};

const Sentences kCjk = {
    "清晨的市場裡，賣菜的老人把新鮮的青菜擺在竹籃中，等著第一位客人。",
    "河邊的柳樹發芽了，孩子們放學以後常在那裡放風箏。",
    "朝の駅は静かで、ホームには三人だけが立っていた。電車は八時十五分に来る。",
    "祖母は台所でお茶をいれながら、昔の港町の話を少しずつ聞かせてくれた。",
    "図書館の二階には古い地図が並び、窓から山がよく見える。",
    "他把信放進抽屜，關上燈，聽見外面下起了小雨。",
    "오늘 아침에는 바람이 불어서 나뭇잎이 길 위로 흩어졌다. ",
    "2015年春天，他們在山腳下開了一間小書店，每天只賣十本書。",
};

const Sentences kEmoji = {
    "😀😃😄 好 ",
    "Good morning! ☀️🌻🌼 ",
    "🎉🎉🎉 party at 8 🕗🍕🍻 ",
    "🐶🐱🐭🐹🐰🦊 ",
    "on my way 🚗💨 ",
    "👍👍 ok 😂😂😂 ",
    "🏃‍♀️🏃‍♂️ running late 😅 ",
    "❤️❤️❤️ love it 😍😘🥰 ",
    "🍎🍊🍋🍌🍉🍇 fruit 🥗 ",
    "✈️🌍🌎🌏 see you soon 👋 ",
};

bool InsideCharacter(char byte) { return (byte & 0xC0) == 0x80; }

std::string Shuffled(const Sentences& sentences, size_t bytes) {
  std::mt19937 random(7);
  std::string text;
  while (text.size() <= bytes) {
    text += sentences[random() % sentences.size()];
  }
  while (InsideCharacter(text[bytes])) {
    ++bytes;
  }
  text.resize(bytes);
  return text;
}

}  // namespace

std::string MakeText(const std::string& name, int64_t bytes) {
  if (name == "ascii") {
    return std::string(English(bytes).view());
  }
  return Shuffled(name == "latin"      ? kLatin
                  : name == "cyrillic" ? kCyrillic
                  : name == "cjk"      ? kCjk
                                       : kEmoji,
                  static_cast<size_t>(bytes));
}

}  // namespace vekch_bench
