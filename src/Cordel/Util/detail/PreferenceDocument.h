#pragma once
// Internal: the XML form of one application's preferences in one scope.
//
//   <?xml version="1.0" encoding="UTF-8"?>
//   <preferences>
//       <string key="name">Cordel</string>
//       <string key="blank" encoding="base64">ICA=</string>
//       <integer key="count">-3</integer>
//       <data key="blob">AAEC/w==</data>
//       <real key="gain">1.5</real>
//   </preferences>
//
// Elements of other kinds, or without a key, are kept as they are and otherwise passed over.

#include <Cordel/common/String.h>

#include <tinyxml2.h>

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace Cordel::Util::detail {

// A stored value as read: its kind and its content, or unusable when the content does not parse.
struct PreferenceValue {
    enum Kind { Unusable, Text, Number, Data, Real } kind = Unusable;
    std::string text;
    int number = 0;
    float real = 0;
    std::vector<unsigned char> data;
};

class PreferenceDocument {
public:
    // An empty document: the declaration and the root alone.
    PreferenceDocument();

    // Takes text as the document. False, leaving the document empty, when it is not one.
    bool Parse(std::string_view text);
    std::string Print() const;

    // The key's first entry.
    std::optional<PreferenceValue> Find(String const& key) const;
    void CollectKeys(std::set<std::string>& keys) const;

    // Each replaces every entry of the key with one new entry at the end. Keys must be printable
    // UTF-8 (attributes cannot hold control characters faithfully), texts UTF-8.
    void SetText(String const& key, std::string_view text);
    void SetNumber(String const& key, int number);
    void SetData(String const& key, std::vector<unsigned char> const& data);
    // The shortest decimal text that reads back as the same float ("nan" and "inf" included).
    void SetReal(String const& key, float real);
    // Removes every entry of the key; true when there was one.
    bool Remove(String const& key);

private:
    void clear();
    void set(String const& key, char const* kind, std::string const& text, char const* encoding = nullptr);

    tinyxml2::XMLDocument doc;
};

} // namespace Cordel::Util::detail
