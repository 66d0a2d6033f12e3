// Two objects joined by signature: a level meter announces levels and clips, a display shows
// them. Build with the project (examples/signals) or against an installed Cordel:
//   c++ -std=c++20 main.cpp $(pkg-config --cflags --libs cordel)

#include <Cordel/Util/Signals.h>

#include <cstdio>

using Cordel::Util::Object;

// Sends two signals.
class Meter : public Object {
    CORDEL_OBJECT(Meter, Object)
public:
    void levelChanged(unsigned int channel, float level) { Emit<&Meter::levelChanged>(channel, level); }
    void clipped() { Emit<&Meter::clipped>(); }

    void measure(unsigned int channel, float peak)
    {
        levelChanged(channel, peak);
        if (peak >= 1.0f)
            clipped();
    }

    CORDEL_SIGNALS(CORDEL_MEMBER(levelChanged, "levelChanged(uint,float)"),
                   CORDEL_MEMBER(clipped, "clipped()"))
};

// Receives with two slots.
class Display : public Object {
    CORDEL_OBJECT(Display, Object)
public:
    void showLevel(unsigned int channel, float level) { std::printf("channel %u: %.2f\n", channel, level); }
    void flashClip() { std::printf("clip!\n"); }

    CORDEL_SLOTS(CORDEL_MEMBER(showLevel, "showLevel(uint,float)"),
                 CORDEL_MEMBER(flashClip, "flashClip()"))
};

int main()
{
    Meter meter;
    Display display;
    bool const ok = Object::Connect(&meter, "2levelChanged(uint,float)", &display, "1showLevel(uint,float)") &&
                    Object::Connect(&meter, "2clipped()", &display, "1flashClip()");
    if (!ok) {
        std::fprintf(stderr, "connection refused\n");
        return 1;
    }
    meter.measure(0, 0.5f);
    meter.measure(1, 1.0f);
    return 0;
}
