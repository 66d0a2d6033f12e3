#pragma once
// Declaring a class's signals and slots in plain C++, without a code generator.
//
//   class Meter : public Cordel::Util::Object {
//       CORDEL_OBJECT(Meter, Cordel::Util::Object)
//   public:
//       // Signals: calling one emits it.
//       void levelChanged(unsigned int channel, float level) { Emit<&Meter::levelChanged>(channel, level); }
//       void clipped() { Emit<&Meter::clipped>(); }
//       // Slots: ordinary member functions.
//       void setGain(float gain);
//       void reset();
//
//       CORDEL_SIGNALS(CORDEL_MEMBER(levelChanged, "levelChanged(uint,float)"),
//                      CORDEL_MEMBER(clipped, "clipped()"))
//       CORDEL_SLOTS(CORDEL_MEMBER(setGain, "setGain(float)"),
//                    CORDEL_MEMBER(reset, "reset()"))
//   };
//
// Rules:
// - CORDEL_OBJECT comes first in the class body and names the class and its direct base (Object
//   or another declared class). It leaves the access at private.
// - The tables come after the member functions they name; a class without signals or without
//   slots leaves that table out. Members may be private.
// - A signature's text is the name a connection uses. Its argument count must match the
//   function's (checked at compile time); the type words are the class's choice and must name
//   the C++ types consistently, since arguments travel as untyped pointers.
// - `Emit` converts its arguments to the signal's parameter types, so `Emit<&Meter::clipped>()`
//   and `Emit<&Meter::levelChanged>(1, 0.5)` deliver an unsigned int and a float.

#include <Cordel/Util/MetaObject.h>
#include <Cordel/Util/Object.h>

#include <cstddef>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Cordel::Util::detail {

template <typename... T>
struct TypeList {};

template <typename F>
struct MemberTraits;
template <typename C, typename R, typename... P>
struct MemberTraits<R (C::*)(P...)> {
    using Class = C;
    using Params = TypeList<P...>;
    static constexpr unsigned int arity = sizeof...(P);
};
template <typename C, typename R, typename... P>
struct MemberTraits<R (C::*)(P...) const> : MemberTraits<R (C::*)(P...)> {};
template <typename C, typename R, typename... P>
struct MemberTraits<R (C::*)(P...) noexcept> : MemberTraits<R (C::*)(P...)> {};
template <typename C, typename R, typename... P>
struct MemberTraits<R (C::*)(P...) const noexcept> : MemberTraits<R (C::*)(P...)> {};

template <auto F>
struct Entry {
    static constexpr auto function = F;
    char const* signature;
};

// The class is part of the type so that a table inherited from a base is never taken for one of
// the derived class's own.
template <typename Owner, typename... E>
struct Table {
    using OwnerClass = Owner;
    static constexpr unsigned int size = sizeof...(E);
    std::tuple<E...> entries;
};

template <typename Owner, typename... E>
constexpr Table<Owner, E...> table(E... e)
{
    return {std::tuple<E...>{e...}};
}

template <auto F>
constexpr Entry<F> entry(char const* signature)
{
    return {signature};
}

// Arguments named by a signature text: 0 for "()", else one more than the commas.
constexpr unsigned int textArity(char const* s)
{
    while (*s && *s != '(')
        ++s;
    if (!*s)
        return ~0u;
    ++s;
    while (*s == ' ' || *s == '\t')
        ++s;
    if (*s == ')')
        return 0;
    unsigned int n = 1;
    for (; *s; ++s)
        n += *s == ',';
    return n;
}

template <auto A, auto B>
constexpr bool sameMember()
{
    if constexpr (std::is_same_v<decltype(A), decltype(B)>)
        return A == B;
    else
        return false;
}

// Everything the declaration macros need from a class, in one friend.
struct Access {
    template <typename C>
    static constexpr unsigned int ownSignals()
    {
        if constexpr (requires { C::CordelSignals; }) {
            using T = std::remove_cvref_t<decltype(C::CordelSignals)>;
            if constexpr (std::is_same_v<typename T::OwnerClass, C>)
                return T::size;
        }
        return 0;
    }

    template <typename C>
    static constexpr unsigned int ownSlots()
    {
        if constexpr (requires { C::CordelSlots; }) {
            using T = std::remove_cvref_t<decltype(C::CordelSlots)>;
            if constexpr (std::is_same_v<typename T::OwnerClass, C>)
                return T::size;
        }
        return 0;
    }

    // Index of the class's first own signal (slot): the count over its superclasses.
    template <typename C>
    static constexpr unsigned int firstSignal()
    {
        if constexpr (std::is_same_v<C, Object>)
            return 0;
        else
            return firstSignal<typename C::CordelSuper>() + ownSignals<typename C::CordelSuper>();
    }

    template <typename C>
    static constexpr unsigned int firstSlot()
    {
        if constexpr (std::is_same_v<C, Object>)
            return 0;
        else
            return firstSlot<typename C::CordelSuper>() + ownSlots<typename C::CordelSuper>();
    }

    template <auto Signal>
    static constexpr unsigned int signalIndex()
    {
        using C = typename MemberTraits<decltype(Signal)>::Class;
        static_assert(ownSignals<C>() > 0, "Emit needs a member listed in its class's CORDEL_SIGNALS");
        constexpr int position = []<std::size_t... I>(std::index_sequence<I...>) {
            using Entries = decltype(C::CordelSignals.entries);
            int found = -1;
            ((found = found < 0 && sameMember<Signal, std::tuple_element_t<I, Entries>::function>() ? int(I) : found),
             ...);
            return found;
        }(std::make_index_sequence<ownSignals<C>()>{});
        static_assert(position >= 0, "Emit needs a member listed in its class's CORDEL_SIGNALS");
        return firstSignal<C>() + position;
    }

    template <typename T>
    static constexpr bool signaturesMatch(T const& t)
    {
        return std::apply(
            [](auto const&... e) {
                return ((textArity(e.signature) ==
                         MemberTraits<std::remove_cv_t<decltype(std::remove_cvref_t<decltype(e)>::function)>>::arity) &&
                        ...);
            },
            t.entries);
    }

    template <typename T>
    static std::vector<MetaData> metaData(T const& t)
    {
        return std::apply(
            [](auto const&... e) {
                return std::vector<MetaData>{MetaData{
                    e.signature, MemberTraits<std::remove_cv_t<decltype(std::remove_cvref_t<decltype(e)>::function)>>::arity}...};
            },
            t.entries);
    }

    template <typename C>
    static MetaObject const* staticMetaObject(char const* className)
    {
        static std::unique_ptr<MetaObject const> const meta(instantiate<C>(className));
        return meta.get();
    }

    template <typename C>
    static MetaObject* instantiate(char const* className)
    {
        static_assert(std::is_base_of_v<typename C::CordelSuper, C>, "CORDEL_OBJECT must name the class's base");
        std::vector<MetaData> signals, slots;
        if constexpr (ownSignals<C>() > 0) {
            static_assert(signaturesMatch(C::CordelSignals),
                          "a signal's signature text and its function differ in argument count");
            signals = metaData(C::CordelSignals);
        }
        if constexpr (ownSlots<C>() > 0) {
            static_assert(signaturesMatch(C::CordelSlots),
                          "a slot's signature text and its function differ in argument count");
            slots = metaData(C::CordelSlots);
        }
        return MetaObject::Instantiate(C::CordelSuper::GetStaticMetaObject(), className, signals.data(),
                                       static_cast<unsigned int>(signals.size()), slots.data(),
                                       static_cast<unsigned int>(slots.size()));
    }

    template <typename C>
    static int emitByIndex(C* self, unsigned int signalIndex, std::vector<void*> const& args)
    {
        if constexpr (ownSignals<C>() > 0) {
            if (signalIndex - firstSignal<C>() < ownSignals<C>()) {
                Object::activateSignal(self->lookupReceivers(signalIndex), args);
                return 1;
            }
        }
        return self->C::CordelSuper::Object_Emit(signalIndex, args);
    }

    template <typename C>
    static int invokeByIndex(C* self, unsigned int slotIndex, std::vector<void*> const& args)
    {
        if constexpr (ownSlots<C>() > 0) {
            unsigned int const own = slotIndex - firstSlot<C>();
            if (own < ownSlots<C>())
                return invokeOwn(self, own, args, std::make_index_sequence<ownSlots<C>()>{});
        }
        return self->C::CordelSuper::Object_Invoke(slotIndex, args);
    }

    template <typename C, std::size_t... I>
    static int invokeOwn(C* self, unsigned int own, std::vector<void*> const& args, std::index_sequence<I...>)
    {
        using Entries = decltype(C::CordelSlots.entries);
        using Thunk = int (*)(C*, std::vector<void*> const&);
        static constexpr Thunk thunks[] = {&call<C, std::tuple_element_t<I, Entries>::function>...};
        return thunks[own](self, args);
    }

    // A slot may take fewer arguments than the signal carries: it reads the leading ones.
    template <typename C, auto Slot>
    static int call(C* self, std::vector<void*> const& args)
    {
        return [&]<typename... P>(TypeList<P...>) {
            if (args.size() < sizeof...(P))
                return 0;
            [&]<std::size_t... I>(std::index_sequence<I...>) {
                (self->*Slot)(*static_cast<std::remove_cvref_t<P>*>(args[I])...);
            }(std::index_sequence_for<P...>{});
            return 1;
        }(typename MemberTraits<decltype(Slot)>::Params{});
    }

    template <auto Signal, typename... A>
    static void emit(Object* sender, A&&... a)
    {
        using Traits = MemberTraits<decltype(Signal)>;
        static_assert(sizeof...(A) == Traits::arity, "Emit takes as many arguments as the signal");
        Object::ConnectionList* list = sender->lookupReceivers(signalIndex<Signal>());
        if (!list)
            return;
        [&]<typename... P>(TypeList<P...>) {
            deliver<std::remove_cvref_t<P>...>(list, std::forward<A>(a)...);
        }(typename Traits::Params{});
    }

    // The parameters are the signal's own types, so that converted arguments live, as
    // temporaries, until the delivery is over.
    template <typename... V>
    static void deliver(Object::ConnectionList* list, V const&... v)
    {
        std::vector<void*> const args{const_cast<void*>(static_cast<void const*>(&v))...};
        Object::activateSignal(list, args);
    }
};

} // namespace Cordel::Util::detail

#define CORDEL_OBJECT(Class, Super)                                                                        \
    friend struct ::Cordel::Util::detail::Access;                                                          \
                                                                                                           \
public:                                                                                                    \
    using CordelClass = Class;                                                                             \
    using CordelSuper = Super;                                                                             \
    static ::Cordel::Util::MetaObject const* GetStaticMetaObject()                                         \
    {                                                                                                      \
        return ::Cordel::Util::detail::Access::staticMetaObject<Class>(#Class);                            \
    }                                                                                                      \
    ::Cordel::Util::MetaObject const* GetMetaObject() const override { return GetStaticMetaObject(); }     \
    char const* GetClassName() const override { return #Class; }                                           \
    int Object_Emit(unsigned int signalIndex, std::vector<void*> const& args) override                     \
    {                                                                                                      \
        return ::Cordel::Util::detail::Access::emitByIndex<Class>(this, signalIndex, args);                \
    }                                                                                                      \
    int Object_Invoke(unsigned int slotIndex, std::vector<void*> const& args) override                     \
    {                                                                                                      \
        return ::Cordel::Util::detail::Access::invokeByIndex<Class>(this, slotIndex, args);                \
    }                                                                                                      \
                                                                                                           \
protected:                                                                                                 \
    template <auto Signal, typename... A>                                                                  \
    void Emit(A&&... a)                                                                                    \
    {                                                                                                      \
        ::Cordel::Util::detail::Access::emit<Signal>(this, std::forward<A>(a)...);                         \
    }                                                                                                      \
                                                                                                           \
private:

#define CORDEL_SIGNALS(...) static constexpr auto CordelSignals = ::Cordel::Util::detail::table<CordelClass>(__VA_ARGS__);
#define CORDEL_SLOTS(...) static constexpr auto CordelSlots = ::Cordel::Util::detail::table<CordelClass>(__VA_ARGS__);
#define CORDEL_MEMBER(function, signature) ::Cordel::Util::detail::entry<&CordelClass::function>(signature)
