#pragma once
// The windows' language. The program's texts are written in English; a translation holds the
// other language's text for each, keyed by a context (the form) and the English text.

#include <QString>

#include <string>

namespace quorlen::ui {

// Swedish when `language` is "SWE" (the ini's Language), English otherwise. Texts shown after
// the call follow it.
void Use_Language(const std::string& language);

// `english` in the chosen language.
QString Tr(const char* context, const char* english);

} // namespace quorlen::ui
