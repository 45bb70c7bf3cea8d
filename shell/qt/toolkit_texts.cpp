#include "shell/qt/toolkit_texts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <array>
#include <memory>

#include "control/settings.h"
#include "shell/languages.h"

namespace {

struct ToolkitLanguage {
    int32_t id;
    const char* name;  // as in the names of Qt's files
};
constexpr std::array<ToolkitLanguage, LANGUAGES - 1> TOOLKIT_LANGUAGES{
    {{40126, "nl"}, {40127, "fr"}, {40128, "pt_BR"}, {40129, "it"}, {40130, "ru"}}};

std::unique_ptr<QTranslator> translator;
int32_t language = ENGLISH_ID;  // that Qt speaks

QString folder_of_qt() { return QLibraryInfo::path(QLibraryInfo::TranslationsPath); }

// Null if Qt has no texts in this language.
std::unique_ptr<QTranslator> load_translator(int32_t id) {
    for (const ToolkitLanguage& row : TOOLKIT_LANGUAGES) {
        if (row.id != id) continue;
        auto loaded = std::make_unique<QTranslator>();
        if (loaded->load(QStringLiteral("qtbase_") + QString::fromLatin1(row.name), toolkit_texts_folder()))
            return loaded;
    }
    return nullptr;
}

}  // namespace

QString (*toolkit_texts_folder)() = folder_of_qt;

void follow_toolkit_language() {
    if (language == settings2.language_id) return;
    end_toolkit_language();
    translator = load_translator(settings2.language_id);
    if (!translator) return;
    language = settings2.language_id;
    QCoreApplication::installTranslator(translator.get());
}

// A program without a language, as at its first start, speaks English.
bool toolkit_speaks_language() {
    return translator ? language == settings2.language_id
                      : !language_usable(settings2.language_id) || settings2.language_id == ENGLISH_ID;
}

void end_toolkit_language() {
    translator.reset();
    language = ENGLISH_ID;
}
