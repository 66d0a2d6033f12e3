// Tour stop: objects with signals and slots.

#include "Tour.h"

#include <Cordel/Util/Signals.h>

using namespace Cordel;
using Cordel::Util::Object;

namespace CordelTool {

namespace {

class Transport : public Object {
    CORDEL_OBJECT(Transport, Object)
public:
    void tempoChanged(unsigned int bar, float bpm) { Emit<&Transport::tempoChanged>(bar, bpm); }
    CORDEL_SIGNALS(CORDEL_MEMBER(tempoChanged, "tempoChanged(uint,float)"))
};

class Listener : public Object {
    CORDEL_OBJECT(Listener, Object)
public:
    using Object::Object;
    void onTempo(unsigned int bar, float bpm)
    {
        TourSay(String("  %1.onTempo(bar %2, %3 bpm)").Arg(GetName()).Arg(bar).Arg(bpm, 1));
    }
    void onBar(unsigned int bar) { TourSay(String("  %1.onBar(bar %2)").Arg(GetName()).Arg(bar)); }
    CORDEL_SLOTS(CORDEL_MEMBER(onTempo, "onTempo(uint,float)"), CORDEL_MEMBER(onBar, "onBar(uint)"))
};

void objectTour()
{
    Transport transport;
    Listener display(String("display"));
    Listener metronome(String("metronome"));

    auto connect = [](Object* sender, char const* signal, Object* receiver, char const* member) {
        bool const ok = Object::Connect(sender, signal, receiver, member);
        TourSay(String("Connect(\"%1\" -> %2 \"%3\") -> %4")
                    .Arg(signal)
                    .Arg(receiver->GetName())
                    .Arg(member)
                    .Arg(ok ? "true" : "false"));
    };
    connect(&transport, "2tempoChanged(uint,float)", &display, "1onTempo(uint, float)");
    connect(&transport, "2tempoChanged(uint,float)", &metronome, "1onBar(uint)");
    connect(&transport, "2tempoChanged(uint,float)", &metronome, "1onBar(float)");

    TourSay("Emitting tempoChanged(17, 128.5) reaches both slots, in the order of connection:");
    transport.tempoChanged(17, 128.5f);
    TourSay(String("tempoChanged is signal %1 of a %2; %3 has %4 slots")
                .Arg(Transport::GetStaticMetaObject()->GetSignalIndex("tempoChanged(uint,float)", true).Get())
                .Arg(transport.GetClassName())
                .Arg(Listener::GetStaticMetaObject()->GetClassName())
                .Arg(Listener::GetStaticMetaObject()->GetNumSlots(true)));
}

} // namespace

CORDEL_TOUR_STOP(90, "Objects: signals delivered to slots joined by signature", objectTour);

} // namespace CordelTool
