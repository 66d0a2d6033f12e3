#pragma once
// One link from a signal of a sender to a member of a receiver. Connections are shared records:
// the sender's list of the signal and the receiver's list of incoming links both hold them, so
// that whichever side goes first can leave the other a consistent view.

#include <cstdint>

namespace Cordel::Util {

class Object;

struct Connection {
    Object* receiver;          // null once the receiver is gone or the link was cut: delivery skips it
    char const* signature;     // the receiving member's signature, owned by the receiver's meta-object
    char type;                 // '1': the member is a slot, '2': it is a signal (re-emitted)
    std::uint32_t index;       // the member's index in the receiver's class chain
    unsigned int argumentCount; // arguments the member takes
    bool busy;                 // set while a delivery walks the list that holds this connection

    // Where the link starts, so that it can be found and cut from the receiver's side.
    Object* sender;
    std::uint32_t signalIndex;
};

} // namespace Cordel::Util
