#pragma once
// The run-time description of a class that declares signals and slots: its name, its superclass
// and two tables of member signatures. One meta-object exists per class, for the life of the process.
//
// Index space: the signals of a class are numbered after all the signals of its superclasses, and
// the slots likewise, so that one index names a member anywhere in the class chain. Every index
// taken or returned here is in that space; `inherited == false` narrows a look-up to the class's
// own entries without renumbering them.

#include <Cordel/common/Export.h>
#include <Cordel/common/Types.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Cordel::Util {

// One entry of a signal or slot table. The word is the number of C++ parameters of the member as
// declared; the declaration helpers fill it in and nothing in the connection logic depends on it,
// which keeps hand-written tables valid with 0.
struct MetaData {
    char const* signature; // for example "levelChanged(uint,float)"
    std::uint32_t word;
};

class CORDEL_API MetaObject {
public:
    // Byte-wise ordering of signature texts for the look-up maps.
    struct StringCompare {
        bool operator()(char const* a, char const* b) const;
    };

    // Builds a meta-object from two tables; the caller owns the result. The signatures are
    // normalised and copied, so the tables need not outlive the call.
    static MetaObject* Instantiate(MetaObject const* super, char const* className, MetaData const* signals,
                                   unsigned int nSignals, MetaData const* slots, unsigned int nSlots);
    ~MetaObject();

    MetaObject const* GetSuperClass() const { return super; }
    char const* GetClassName() const { return className.c_str(); }

    unsigned int GetNumSignals(bool inherited) const;
    unsigned int GetNumSlots(bool inherited) const;

    // The signature must be normalised and carry no '1'/'2' prefix.
    checked_value<unsigned int> GetSignalIndex(char const* signature, bool inherited) const;
    checked_value<unsigned int> GetSlotIndex(char const* signature, bool inherited) const;

    // The stored (normalised) signature for an index, or null when no class in reach has it.
    char const* GetSignalMetaData(unsigned int index, bool inherited) const;
    char const* GetSlotMetaData(unsigned int index, bool inherited) const;
    // The whole entry, with its word.
    MetaData const* GetSignalEntry(unsigned int index, bool inherited) const;
    MetaData const* GetSlotEntry(unsigned int index, bool inherited) const;

    MetaObject(MetaObject const&) = delete;
    MetaObject& operator=(MetaObject const&) = delete;

private:
    struct Table {
        std::vector<std::unique_ptr<std::string>> texts; // stable storage behind the entries
        std::vector<MetaData> entries;
        std::map<char const*, unsigned int, StringCompare> byName; // signature -> own position
        void fill(MetaData const* table, unsigned int n);
    };

    MetaObject(MetaObject const* super, char const* className);

    static unsigned int count(MetaObject const* meta, Table MetaObject::*table, bool inherited);
    static checked_value<unsigned int> find(MetaObject const* meta, Table MetaObject::*table,
                                            char const* signature, bool inherited);
    static MetaData const* entry(MetaObject const* meta, Table MetaObject::*table, unsigned int index,
                                 bool inherited);

    MetaObject const* super;
    std::string className;
    Table signalTable;
    Table slotTable;
};

} // namespace Cordel::Util
