#pragma once
// The base class of every class with named signals and slots.
//
// A class lists its signals and slots in a meta-object (see <Cordel/Util/Signals.h> for the
// declarations that build it), and `Connect` joins a signal of one object to a slot, or to a
// signal, of another by their signature texts. Emitting a signal calls every connected member
// at once, in the order of connection, on the emitting thread: there is no queue, no lock and no
// thread affinity, so one object must not be connected, disconnected and emitted from several
// threads at once.
//
// Signature texts given to `Connect` and `Disconnect` carry a prefix: '2' for a signal and '1'
// for a slot ("2levelChanged(uint,float)", "1setLevel(uint)"). White space around '(', ',' and
// ')' does not matter.
//
// Lifetime rules:
// - Destroying a receiver cuts every link to it: the sender skips it from then on, even within
//   an emission that is running. Calls posted to it through an invocation (see
//   <Cordel/Util/ObjectInvoke.h>) that have not run yet do nothing.
// - Destroying a sender drops its connections. A sender must not be destroyed by a member that
//   one of its own emissions is calling.
// - An object owns the objects given to `AddAutoDelete` and destroys them first in its
//   destructor, in the order they were added; nobody else may delete them.

#include <Cordel/Util/MetaObject.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/SharedPtr.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

#include <atomic>
#include <cstdint>
#include <vector>

namespace Cordel::Util {

namespace detail {
struct Access;
class InvokeGate;
} // namespace detail

// One link from a signal to a receiver (defined inside the library).
struct Connection;

class CORDEL_API Object : private noncopyable {
public:
    using ConnectionList = std::vector<shared_ptr<Connection>>;

    explicit Object(String const& name = String());
    virtual ~Object();

    // Dispatch by index with the arguments as one pointer per value. Each declaring class
    // handles its own indices and hands the others to its superclass; they return 1 when the
    // index named a member (and, for a slot, enough arguments came), else 0.
    virtual int Object_Emit(unsigned int signalIndex, std::vector<void*> const& args);
    virtual int Object_Invoke(unsigned int slotIndex, std::vector<void*> const& args);
    virtual MetaObject const* GetMetaObject() const;
    virtual char const* GetClassName() const;

    // Object's own meta-object: no signals, no slots. Made on first call, released at exit.
    static MetaObject const* GetStaticMetaObject();

    // Joins `signal` of `sender` to `member` of `receiver`. The member may take the signal's
    // arguments, a leading part of them, or none. Connecting the same pair twice delivers twice.
    // Every failure (a null argument, a missing prefix, an unknown signature, arguments that do
    // not fit) returns false and changes nothing.
    static bool Connect(Object* sender, char const* signal, Object* receiver, char const* member);

    // Cuts every connection that matches all given arguments; a null argument matches anything.
    // At least one of `sender` and `receiver` must be given. `signal` needs its '2' prefix and
    // `member` its '1' or '2' prefix. Returns whether anything was cut; a malformed or unknown
    // signal returns false. Safe to call from a member that an emission is calling: the cut
    // connections are skipped by that emission.
    static bool Disconnect(Object* sender, char const* signal, Object* receiver, char const* member);

    // Whether a member with `memberSignature` may receive the signal `signalSignature` (both
    // normalised, without prefix): its arguments are "()", the same list, or a leading part of it.
    static bool CheckConnectArgs(char const* signalSignature, char const* memberSignature);
    static String Normalize(char const* signature);

    // Takes ownership of `o` (once; null and this object itself are ignored).
    void AddAutoDelete(Object* o);

    // Whether this object's class, or a class it derives from, has the name or the meta-object.
    bool IsType(char const* className) const;
    bool IsType(MetaObject const* meta) const;

    String const& GetName() const { return name; }
    void SetName(String const& newName) { name = newName; }
    // A word free for the application; 0 at construction.
    std::uint32_t GetTag() const { return tag; }
    void SetTag(std::uint32_t value) { tag = value; }

    // The connections of one signal, or null when it has none yet. The text form takes a
    // signature with or without its '2' prefix.
    ConnectionList* lookupReceivers(unsigned int signalIndex) const
    {
        return signalIndex < receiversBySignal.size() ? receiversBySignal[signalIndex] : nullptr;
    }
    ConnectionList* lookupReceivers(char const* signature) const;

protected:
    friend struct detail::Access;
    friend class ObjectInvokeImpl;

    // Delivers one emission to every connection of `list`, including connections that a
    // member adds while the delivery runs.
    static void activateSignal(ConnectionList* list, std::vector<void*> const& args);

    static MetaObject const* g_pMetaObject;

private:
    static bool connect(Object* sender, unsigned int signalIndex, Object* receiver, char type,
                        unsigned int memberIndex);
    static void detach(shared_ptr<Connection> const& connection);
    static void prune(ConnectionList* list);
    // The gate of posted calls into this object, made on first use; the caller gets a share of it.
    detail::InvokeGate* shareInvokeGate();

    String name;
    std::uint32_t tag;
    std::vector<ConnectionList*> receiversBySignal;
    ConnectionList incoming; // the connections in which this object is the receiver
    std::vector<Object*> autoDelete;
    std::atomic<detail::InvokeGate*> invokeGate; // null until a call is built for this object
};

} // namespace Cordel::Util
