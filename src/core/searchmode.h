#pragma once

#include <QString>

namespace zarek {

// Which task a search dialog and the screen after it serve.
enum class SearchMode { NewKurs, EditKurs, Kola, EditFakt, All, Klients, Driver, NalichSK, SkladPR, SkladPRN, FaktNew, PreRazh };

inline QString searchModeName(SearchMode mode)
{
    switch (mode) {
    case SearchMode::NewKurs: return QStringLiteral("NewKurs");
    case SearchMode::EditKurs: return QStringLiteral("EditKurs");
    case SearchMode::Kola: return QStringLiteral("Kola");
    case SearchMode::EditFakt: return QStringLiteral("EditFakt");
    case SearchMode::All: return QStringLiteral("All");
    case SearchMode::Klients: return QStringLiteral("Klients");
    case SearchMode::Driver: return QStringLiteral("Driver");
    case SearchMode::NalichSK: return QStringLiteral("NalichSK");
    case SearchMode::SkladPR: return QStringLiteral("SkladPR");
    case SearchMode::SkladPRN: return QStringLiteral("SkladPRN");
    case SearchMode::FaktNew: return QStringLiteral("FaktNew");
    case SearchMode::PreRazh: return QStringLiteral("PreRazh");
    }
    return {};
}

}
