#include "SymbolLists.h"

#include <algorithm>
#include <cctype>

#include "CivilDate.h"
#include "qvnsim.h"

namespace qvnsim {

namespace {

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

int TypeOfClassName(const std::string& name) {
    if (name == "STOCKS") return kStock;
    if (name == "INDICES") return kIndex;
    if (name == "BONDS") return kBond;
    if (name == "FUTURES") return kFuture;
    if (name == "CURRENCIES") return kCurrency;
    if (name == "OPTIONS") return kOption;
    return 0;
}

}  // namespace

std::optional<std::vector<int>> SymbolList(const Universe& universe, const std::string& rawName,
                                           int assetType) {
    const std::string name = Upper(rawName);
    const int classType = TypeOfClassName(name);
    const Exchange* exchange = nullptr;
    for (const Exchange& e : universe.Exchanges()) {
        if (name == e.shortName) exchange = &e;
    }
    const Security* index = universe.Find(name);
    if (index != nullptr && index->assetType != kIndex) index = nullptr;
    if (!(name.empty() || name == "ALL" || classType != 0 || exchange != nullptr ||
          index != nullptr)) {
        return std::nullopt;
    }
    const bool typeFilter = ClassBitOf(assetType) != 0;
    std::vector<int> rows;
    for (const Security& s : universe.Securities()) {
        if (!s.visible) continue;
        if (classType != 0 ? s.assetType != classType : s.assetType == kOption) continue;
        if (exchange != nullptr && s.exchange != exchange->number) continue;
        if (index != nullptr && (s.assetType != kStock || s.exchange != index->exchange)) continue;
        if (typeFilter && s.assetType != assetType) continue;
        rows.push_back(universe.IndexOf(s));
    }
    return rows;
}

std::vector<int> OptionChain(const Universe& universe, const std::string& underlying,
                             const QvnSimOptionFilter& filter) {
    const std::string wanted = Upper(underlying);
    const int64_t expiryDay = filter.expiry ? DayOf(FromDateValue(filter.expiry)) : 0;
    std::vector<int> rows;
    for (const Security& s : universe.Securities()) {
        if (!s.visible || s.assetType != kOption || Upper(s.underlyingSymbol) != wanted) continue;
        if (expiryDay != 0 && s.expiryDay != expiryDay) continue;
        if (filter.minStrike > 0 && s.strike < filter.minStrike) continue;
        if (filter.maxStrike > 0 && s.strike > filter.maxStrike) continue;
        if ((filter.kind == 'C' || filter.kind == 'P') && s.optionKind != filter.kind) continue;
        rows.push_back(universe.IndexOf(s));
    }
    std::stable_sort(rows.begin(), rows.end(), [&universe](int a, int b) {
        const Security& x = universe.Securities()[static_cast<size_t>(a)];
        const Security& y = universe.Securities()[static_cast<size_t>(b)];
        if (x.expiryDay != y.expiryDay) return x.expiryDay < y.expiryDay;
        if (x.strike != y.strike) return x.strike < y.strike;
        return x.optionKind < y.optionKind;
    });
    return rows;
}

}  // namespace qvnsim
