#include <Cordel/Util/MetaObject.h>
#include <Cordel/Util/detail/Signature.h>

#include <cstring>

namespace Cordel::Util {

namespace detail {

namespace {

bool isSpace(char c) { return c == ' ' || c == '\t'; }
bool isDelimiter(char c) { return c == ',' || c == '(' || c == ')'; }

} // namespace

std::string normalizeSignature(char const* signature)
{
    std::string out;
    bool pendingSpace = false;
    for (char const* p = signature; *p; ++p) {
        char const c = *p;
        if (isSpace(c)) {
            pendingSpace = true;
            continue;
        }
        if (pendingSpace && !out.empty() && !isDelimiter(out.back()) && !isDelimiter(c) && c != '*' && c != '&')
            out += ' ';
        pendingSpace = false;
        out += c;
    }
    return out;
}

} // namespace detail

bool MetaObject::StringCompare::operator()(char const* a, char const* b) const
{
    return std::strcmp(a, b) < 0;
}

MetaObject::MetaObject(MetaObject const* superClass, char const* name)
    : super(superClass), className(name ? name : "")
{
}

MetaObject::~MetaObject() = default;

MetaObject* MetaObject::Instantiate(MetaObject const* super, char const* className, MetaData const* signals,
                                    unsigned int nSignals, MetaData const* slots, unsigned int nSlots)
{
    auto* meta = new MetaObject(super, className);
    meta->signalTable.fill(signals, nSignals);
    meta->slotTable.fill(slots, nSlots);
    return meta;
}

// A signature listed twice keeps its first position, so a look-up always finds the earlier entry.
void MetaObject::Table::fill(MetaData const* table, unsigned int n)
{
    if (!table)
        n = 0;
    texts.reserve(n);
    entries.reserve(n);
    for (unsigned int i = 0; i < n; ++i) {
        texts.push_back(std::make_unique<std::string>(detail::normalizeSignature(table[i].signature ? table[i].signature : "")));
        entries.push_back({texts.back()->c_str(), table[i].word});
        byName.emplace(entries.back().signature, i);
    }
}

unsigned int MetaObject::count(MetaObject const* meta, Table MetaObject::*table, bool inherited)
{
    unsigned int n = 0;
    for (; meta; meta = inherited ? meta->super : nullptr)
        n += static_cast<unsigned int>((meta->*table).entries.size());
    return n;
}

checked_value<unsigned int> MetaObject::find(MetaObject const* meta, Table MetaObject::*table,
                                             char const* signature, bool inherited)
{
    if (!signature)
        return {};
    for (; meta; meta = inherited ? meta->super : nullptr) {
        auto const& byName = (meta->*table).byName;
        auto const it = byName.find(signature);
        if (it != byName.end())
            return count(meta->super, table, true) + it->second;
    }
    return {};
}

MetaData const* MetaObject::entry(MetaObject const* meta, Table MetaObject::*table, unsigned int index,
                                  bool inherited)
{
    for (; meta; meta = inherited ? meta->super : nullptr) {
        unsigned int const first = count(meta->super, table, true);
        auto const& entries = (meta->*table).entries;
        if (index >= first)
            return index - first < entries.size() ? &entries[index - first] : nullptr;
    }
    return nullptr;
}

unsigned int MetaObject::GetNumSignals(bool inherited) const { return count(this, &MetaObject::signalTable, inherited); }
unsigned int MetaObject::GetNumSlots(bool inherited) const { return count(this, &MetaObject::slotTable, inherited); }

checked_value<unsigned int> MetaObject::GetSignalIndex(char const* signature, bool inherited) const
{
    return find(this, &MetaObject::signalTable, signature, inherited);
}

checked_value<unsigned int> MetaObject::GetSlotIndex(char const* signature, bool inherited) const
{
    return find(this, &MetaObject::slotTable, signature, inherited);
}

MetaData const* MetaObject::GetSignalEntry(unsigned int index, bool inherited) const
{
    return entry(this, &MetaObject::signalTable, index, inherited);
}

MetaData const* MetaObject::GetSlotEntry(unsigned int index, bool inherited) const
{
    return entry(this, &MetaObject::slotTable, index, inherited);
}

char const* MetaObject::GetSignalMetaData(unsigned int index, bool inherited) const
{
    MetaData const* e = GetSignalEntry(index, inherited);
    return e ? e->signature : nullptr;
}

char const* MetaObject::GetSlotMetaData(unsigned int index, bool inherited) const
{
    MetaData const* e = GetSlotEntry(index, inherited);
    return e ? e->signature : nullptr;
}

} // namespace Cordel::Util
