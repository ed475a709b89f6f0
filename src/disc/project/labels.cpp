#include "disc/project/labels.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>

#include "system/paths.h"

namespace tkv::disc {

namespace {

// By language; the texts in the order of Labels. Each must be found by somebody who looks for it on
// a film's disc, and the first five fit a button of the page.
std::span<const Labels> knownLabels() {
    static const std::array<Labels, 8> labels{{
        {"de", "Alle abspielen", "Film starten", "Zurück", "Weiter", "Hauptmenü", "Kapitel",
         "Kapitel {}", "Titel {}", "{} Min.", "Sprachen", "Ton", "Untertitel", "Keine Untertitel"},
        {"en", "Play all", "Play film", "Previous", "Next", "Main menu", "Chapters", "Chapter {}",
         "Title {}", "{} min", "Languages", "Sound", "Subtitles", "No subtitles"},
        {"es", "Reproducir todo", "Ver película", "Anterior", "Siguiente", "Menú principal",
         "Capítulos", "Capítulo {}", "Título {}", "{} min", "Idiomas", "Audio", "Subtítulos",
         "Sin subtítulos"},
        {"fr", "Tout lire", "Lire le film", "Précédent", "Suivant", "Menu principal", "Chapitres",
         "Chapitre {}", "Titre {}", "{} min", "Langues", "Son", "Sous-titres", "Sans sous-titres"},
        {"it", "Riproduci tutto", "Guarda il film", "Indietro", "Avanti", "Menu principale",
         "Capitoli", "Capitolo {}", "Titolo {}", "{} min", "Lingue", "Audio", "Sottotitoli",
         "Senza sottotitoli"},
        {"ja", "すべて再生", "本編再生", "前へ", "次へ", "メインメニュー", "チャプター",
         "チャプター {}", "タイトル {}", "{}分", "言語", "音声", "字幕", "字幕なし"},
        {"nl", "Alles afspelen", "Film afspelen", "Vorige", "Volgende", "Hoofdmenu", "Hoofdstukken",
         "Hoofdstuk {}", "Titel {}", "{} min.", "Talen", "Geluid", "Ondertitels",
         "Geen ondertitels"},
        {"pt", "Reproduzir tudo", "Ver o filme", "Anterior", "Seguinte", "Menu principal",
         "Capítulos", "Capítulo {}", "Título {}", "{} min", "Idiomas", "Áudio", "Legendas",
         "Sem legendas"},
    }};
    return labels;
}

const Labels* find(std::string_view language) {
    const std::string letters = asciiLowered(language.substr(0, language.find_first_of("_-.@")));
    const auto known = knownLabels();
    const auto found = std::find_if(known.begin(), known.end(), [&](const Labels& labels) {
        return labels.language == letters;
    });
    return found == known.end() ? nullptr : &*found;
}

}  // namespace

std::string Labels::*labelNamed(std::string_view name) {
    for (const LabelName& label : kLabelNames) {
        if (label.name == name) return label.text;
    }
    return nullptr;
}

std::string labelNames() {
    std::string list;
    for (const LabelName& label : kLabelNames)
        list.append(list.empty() ? "" : ", ").append(label.name);
    return list;
}

Labels labelsOf(std::string_view language) {
    const Labels* found = find(language);
    return found != nullptr ? *found : *find("en");
}

bool hasLabels(std::string_view language) {
    return find(language) != nullptr;
}

std::string labelLanguages() {
    std::string list;
    const auto known = knownLabels();
    for (const Labels& labels : known) {
        if (!list.empty()) list += &labels == &known.back() ? " or " : ", ";
        list += labels.language;
    }
    return list;
}

Labels inLanguage(const Labels& labels, std::string_view language) {
    const Labels before = labelsOf(labels.language);
    Labels result = labelsOf(language);
    if (labels.language.empty()) return result;
    for (const LabelName& label : kLabelNames) {
        if (labels.*label.text != before.*label.text) result.*label.text = labels.*label.text;
    }
    return result;
}

std::string withNumber(std::string_view label, int number) {
    std::string text(label);
    const std::size_t place = text.find("{}");
    if (place != std::string::npos) text.replace(place, 2, std::to_string(number));
    return text;
}

}  // namespace tkv::disc
