#pragma once
// The library's own reference-counted handle. Two members: the object pointer (may be null) and a
// pointer to a separately allocated 32-bit count that starts at 1, even for a null object.
// The count is a plain integer on purpose: a handle and its copies belong to one thread.
// T may be an array type U[], which is released with delete[].
// A moved-from handle holds neither pointer; it may be assigned to, reset or destroyed.

#include <cstdint>
#include <type_traits>
#include <utility>

namespace Cordel {

template <typename T>
class shared_ptr {
public:
    using element_type = std::remove_extent_t<T>;

    shared_ptr() : object(nullptr), count(new std::uint32_t(1)) {}
    explicit shared_ptr(element_type* p) : object(p), count(new std::uint32_t(1)) {}
    shared_ptr(shared_ptr const& other) : object(other.object), count(other.count)
    {
        if (count)
            ++*count;
    }
    shared_ptr(shared_ptr&& other) noexcept : object(other.object), count(other.count)
    {
        other.object = nullptr;
        other.count = nullptr;
    }
    ~shared_ptr() { release(); }

    shared_ptr& operator=(shared_ptr const& other)
    {
        if (count != other.count) {
            if (other.count)
                ++*other.count;
            release();
            object = other.object;
            count = other.count;
        }
        return *this;
    }
    shared_ptr& operator=(shared_ptr&& other) noexcept
    {
        swap(other);
        return *this;
    }

    element_type* get() const { return object; }
    element_type& operator*() const { return *object; }
    element_type* operator->() const { return object; }
    element_type& operator[](std::size_t i) const { return object[i]; }
    explicit operator bool() const { return object != nullptr; }

    std::uint32_t use_count() const { return count ? *count : 0; }
    bool unique() const { return count && *count == 1; }
    // The address of the count cell; lets callers observe whether a cell was reused.
    std::uint32_t const* count_cell() const { return count; }

    // Replaces the owned object. When this handle was the last owner, the old object is deleted and
    // its count cell is reused with value 1; otherwise the old owners keep theirs and this handle
    // gets a fresh cell.
    void reset(element_type* p)
    {
        if (!count) {
            count = new std::uint32_t(1);
        } else if (--*count == 0) {
            destroy(object);
            *count = 1;
        } else {
            count = new std::uint32_t(1);
        }
        object = p;
    }

    void swap(shared_ptr& other) noexcept
    {
        std::swap(object, other.object);
        std::swap(count, other.count);
    }

private:
    static void destroy(element_type* p)
    {
        if constexpr (std::is_array_v<T>)
            delete[] p;
        else
            delete p;
    }
    void release()
    {
        if (count && --*count == 0) {
            destroy(object);
            delete count;
        }
    }

    element_type* object;
    std::uint32_t* count;
};

} // namespace Cordel
