#pragma once
// Small value types shared by every area of the library.

#include <utility>

namespace Cordel {

// An optional value: the value and whether it is set. Default-constructed it is unset.
// Unset means "to the end" for a length, "not found" for a search result, "no limit" for a
// time-out and "from the clock" for a seed.
template <typename T>
class checked_value {
public:
    checked_value() : value(), set(false) {}
    checked_value(T const& v) : value(v), set(true) {}

    bool IsSet() const { return set; }
    T const& Get() const { return value; }
    // The value when set, otherwise the fallback.
    T GetOr(T const& fallback) const { return set ? value : fallback; }
    void Set(T const& v) { value = v; set = true; }
    void Unset() { value = T(); set = false; }

    friend bool operator==(checked_value const& a, checked_value const& b)
    {
        return a.set == b.set && (!a.set || a.value == b.value);
    }

private:
    T value;
    bool set;
};

// A pair of T: the minimum, then the maximum.
template <typename T>
struct value_range {
    value_range() : minimum(), maximum() {}
    value_range(T const& lo, T const& hi) : minimum(lo), maximum(hi) {}
    T minimum;
    T maximum;

    friend bool operator==(value_range const&, value_range const&) = default;
};

// An empty base that forbids copying; classes owning platform handles derive from it.
class noncopyable {
protected:
    noncopyable() = default;
    ~noncopyable() = default;

public:
    noncopyable(noncopyable const&) = delete;
    noncopyable& operator=(noncopyable const&) = delete;
};

} // namespace Cordel
