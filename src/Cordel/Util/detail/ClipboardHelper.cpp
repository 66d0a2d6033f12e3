// cordel-clipboard: libcordel's bridge to the X11 CLIPBOARD selection.
//
// X11 keeps no clipboard contents of its own: the program that owns the selection must stay
// around and answer every request. A library cannot do that without a thread or an event loop in
// its caller, so it starts this helper instead, which is also how it reads the clipboard.
//
//   cordel-clipboard serve              reads entries from standard input, takes the selection,
//                                       prints "ok" and goes on serving in the background until
//                                       another program takes the selection over
//   cordel-clipboard targets            prints the targets on offer, one per line
//   cordel-clipboard get MAX TARGET...  prints the data of the first target on offer (at most
//                                       MAX bytes)
//
// An entry on standard input is a target name and its data, each preceded by its length as a
// native 32-bit number. Serving no entries at all empties the clipboard.
//
// Exit codes: 0 done, 1 not on offer, 2 no display, 3 more than MAX bytes, 4 any other failure.

#include <Cordel/Util/detail/Descriptor.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <poll.h>
#include <unistd.h>

#include <fcntl.h>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Cordel::Util::detail::ReadAll;
using Cordel::Util::detail::WriteAll;

enum ExitCode { Done = 0, NotOnOffer = 1, NoDisplay = 2, TooLarge = 3, Failed = 4 };

// A clipboard owner that stops answering must not hang whoever asked.
constexpr int replyTimeoutMs = 3000;
// What one serve may hold: generous for clipboard data, but bounded.
constexpr std::size_t maxServeBytes = std::size_t(1) << 30;

using Bytes = std::vector<unsigned char>;

struct Entry {
    Atom target;
    Bytes data;
};

// One transfer in INCR chunks to a requestor whose window property we refill on each deletion.
struct Transfer {
    Window requestor;
    Atom property;
    Atom type;
    Entry const* entry;
    std::size_t offset;
};

struct Atoms {
    Atom clipboard, targets, timestamp, incr, transfer;
    explicit Atoms(Display* d)
        : clipboard(XInternAtom(d, "CLIPBOARD", False)), targets(XInternAtom(d, "TARGETS", False)),
          timestamp(XInternAtom(d, "TIMESTAMP", False)), incr(XInternAtom(d, "INCR", False)),
          transfer(XInternAtom(d, "CORDEL_CLIPBOARD", False))
    {
    }
};

int ignoreErrors(Display*, XErrorEvent*)
{
    // A requestor may vanish mid-transfer; its BadWindow must not end the service for others.
    return 0;
}

int displayLost(Display*)
{
    std::_Exit(Done);
}

bool takeField(std::string const& input, std::size_t& at, Bytes& field)
{
    std::uint32_t length = 0;
    if (input.size() - at < sizeof length)
        return false;
    std::memcpy(&length, input.data() + at, sizeof length);
    at += sizeof length;
    if (input.size() - at < length)
        return false;
    field.assign(input.begin() + long(at), input.begin() + long(at + length));
    at += length;
    return true;
}

bool parseEntries(Display* d, std::string const& input, std::vector<Entry>& entries)
{
    std::size_t at = 0;
    while (at < input.size()) {
        Bytes name, data;
        if (!takeField(input, at, name) || !takeField(input, at, data) || name.empty())
            return false;
        std::string const target(name.begin(), name.end());
        entries.push_back({XInternAtom(d, target.c_str(), False), std::move(data)});
    }
    return true;
}

int remainingMs(std::chrono::steady_clock::time_point deadline)
{
    auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return left.count() > 0 ? int(left.count()) : 0;
}

// Waits for an event of the given type on the window that also passes the test.
template <typename Test>
bool waitForEvent(Display* d, Window w, int type, XEvent& event, Test test)
{
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(replyTimeoutMs);
    for (;;) {
        while (XCheckTypedWindowEvent(d, w, type, &event))
            if (test(event))
                return true;
        int const left = remainingMs(deadline);
        if (left == 0)
            return false;
        pollfd p{ConnectionNumber(d), POLLIN, 0};
        ::poll(&p, 1, left);
    }
}

Window makeWindow(Display* d)
{
    Window const w = XCreateSimpleWindow(d, DefaultRootWindow(d), 0, 0, 1, 1, 0, 0, 0);
    XSelectInput(d, w, PropertyChangeMask);
    return w;
}

// A server time stamp for taking the selection: the time of a property change of our own.
Time serverTime(Display* d, Window w, Atoms const& atoms)
{
    XChangeProperty(d, w, atoms.transfer, XA_STRING, 8, PropModeAppend, nullptr, 0);
    XEvent event;
    if (!waitForEvent(d, w, PropertyNotify, event, [](XEvent const&) { return true; }))
        return CurrentTime;
    return event.xproperty.time;
}

std::size_t chunkSize(Display* d)
{
    long units = XExtendedMaxRequestSize(d);
    if (units == 0)
        units = XMaxRequestSize(d);
    // Request sizes count 4-byte units; leave room for the request's own header.
    long const bytes = units * 4 - 1024;
    return std::size_t(bytes < 4096 ? 4096 : (bytes > (1 << 18) ? (1 << 18) : bytes));
}

class Server {
public:
    Server(Display* d, std::vector<Entry> entries)
        : d(d), atoms(d), entries(std::move(entries)), window(makeWindow(d)), chunk(chunkSize(d))
    {
    }

    bool Take()
    {
        owned = serverTime(d, window, atoms);
        XSetSelectionOwner(d, atoms.clipboard, window, owned);
        return XGetSelectionOwner(d, atoms.clipboard) == window;
    }

    // Answers requests until another program owns the selection and no transfer is left.
    void Run()
    {
        bool lost = false;
        while (!lost || !transfers.empty()) {
            XEvent event;
            XNextEvent(d, &event);
            if (event.type == SelectionClear && event.xselectionclear.selection == atoms.clipboard)
                lost = true;
            else if (event.type == SelectionRequest && !lost)
                answer(event.xselectionrequest);
            else if (event.type == PropertyNotify && event.xproperty.state == PropertyDelete)
                continueTransfer(event.xproperty);
        }
    }

private:
    Entry const* find(Atom target) const
    {
        for (Entry const& e : entries)
            if (e.target == target)
                return &e;
        return nullptr;
    }

    void answer(XSelectionRequestEvent const& request)
    {
        // Clients from before ICCCM leave the property out and mean the target.
        Atom const property = request.property == None ? request.target : request.property;
        bool const stale = request.time != CurrentTime && request.time < owned;
        bool const done = !stale && request.selection == atoms.clipboard && provide(request, property);

        XEvent reply{};
        reply.xselection.type = SelectionNotify;
        reply.xselection.display = request.display;
        reply.xselection.requestor = request.requestor;
        reply.xselection.selection = request.selection;
        reply.xselection.target = request.target;
        reply.xselection.property = done ? property : None;
        reply.xselection.time = request.time;
        XSendEvent(d, request.requestor, False, NoEventMask, &reply);
        XFlush(d);
    }

    bool provide(XSelectionRequestEvent const& request, Atom property)
    {
        if (request.target == atoms.targets) {
            std::vector<Atom> offered{atoms.targets, atoms.timestamp};
            for (Entry const& e : entries)
                offered.push_back(e.target);
            XChangeProperty(d, request.requestor, property, XA_ATOM, 32, PropModeReplace,
                            reinterpret_cast<unsigned char const*>(offered.data()), int(offered.size()));
            return true;
        }
        if (request.target == atoms.timestamp) {
            long const time = long(owned);
            XChangeProperty(d, request.requestor, property, XA_INTEGER, 32, PropModeReplace,
                            reinterpret_cast<unsigned char const*>(&time), 1);
            return true;
        }
        Entry const* entry = find(request.target);
        if (!entry)
            return false;
        Atom const type = request.target;
        if (entry->data.size() <= chunk) {
            XChangeProperty(d, request.requestor, property, type, 8, PropModeReplace, entry->data.data(),
                            int(entry->data.size()));
            return true;
        }
        // Too big for one request: announce the size and hand it over chunk by chunk, each time
        // the requestor deletes the property.
        XSelectInput(d, request.requestor, PropertyChangeMask);
        long const size = long(entry->data.size());
        XChangeProperty(d, request.requestor, property, atoms.incr, 32, PropModeReplace,
                        reinterpret_cast<unsigned char const*>(&size), 1);
        transfers.push_back({request.requestor, property, type, entry, 0});
        return true;
    }

    void continueTransfer(XPropertyEvent const& event)
    {
        for (auto t = transfers.begin(); t != transfers.end(); ++t) {
            if (t->requestor != event.window || t->property != event.atom)
                continue;
            std::size_t const left = t->entry->data.size() - t->offset;
            std::size_t const n = left < chunk ? left : chunk;
            XChangeProperty(d, t->requestor, t->property, t->type, 8, PropModeReplace,
                            t->entry->data.data() + t->offset, int(n));
            t->offset += n;
            // The zero-length piece after the last one ends the transfer.
            if (n == 0) {
                XSelectInput(d, t->requestor, NoEventMask);
                transfers.erase(t);
            }
            XFlush(d);
            return;
        }
    }

    Display* d;
    Atoms atoms;
    std::vector<Entry> entries;
    Window window;
    std::size_t chunk;
    Time owned = CurrentTime;
    std::vector<Transfer> transfers;
};

// Tells the caller that the selection is ours and served.
void reportReady()
{
    static char const ok[] = "ok\n";
    WriteAll(STDOUT_FILENO, ok, sizeof ok - 1);
}

int serve(Display* d)
{
    std::string input;
    std::vector<Entry> entries;
    if (!ReadAll(STDIN_FILENO, input, maxServeBytes) || !parseEntries(d, input, entries))
        return Failed;
    input = std::string();
    bool const empty = entries.empty();
    Server server(d, std::move(entries));
    if (!server.Take())
        return Failed;
    XSync(d, False);
    if (empty) {
        // Ending the connection destroys our window, which leaves the selection without owner.
        reportReady();
        return Done;
    }

    // The caller waits for our standard output to close, so the child must let go of it; the
    // parent exits at once, so that nobody has to wait for the server that stays behind.
    pid_t const child = ::fork();
    if (child < 0)
        return Failed;
    if (child > 0) {
        reportReady();
        std::_Exit(Done);
    }
    ::setsid();
    int const null = ::open("/dev/null", O_RDWR);
    ::dup2(null, STDIN_FILENO);
    ::dup2(null, STDOUT_FILENO);
    ::close(null);
    server.Run();
    return Done;
}

// Asks the owner to convert the selection to target into our property; false when it refuses.
bool convert(Display* d, Window w, Atoms const& atoms, Atom target)
{
    XConvertSelection(d, atoms.clipboard, target, atoms.transfer, w, CurrentTime);
    XEvent event;
    if (!waitForEvent(d, w, SelectionNotify, event,
                      [&](XEvent const& e) { return e.xselection.selection == atoms.clipboard; }))
        return false;
    return event.xselection.property != None;
}

// Reads and deletes our property; items of format 32 arrive from Xlib as longs.
bool takeProperty(Display* d, Window w, Atoms const& atoms, Bytes& out, Atom& type)
{
    int format = 0;
    unsigned long items = 0, after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(d, w, atoms.transfer, 0, LONG_MAX / 4, True, AnyPropertyType, &type, &format, &items,
                           &after, &data) != Success)
        return false;
    out.clear();
    if (format == 32) {
        for (unsigned long i = 0; i < items; ++i) {
            std::uint32_t const v = std::uint32_t(reinterpret_cast<long const*>(data)[i]);
            unsigned char const* b = reinterpret_cast<unsigned char const*>(&v);
            out.insert(out.end(), b, b + 4);
        }
    } else if (data) {
        out.assign(data, data + items * unsigned(format / 8));
    }
    if (data)
        XFree(data);
    return true;
}

int fetch(Display* d, Window w, Atoms const& atoms, Atom target, std::size_t max, Bytes& out)
{
    if (!convert(d, w, atoms, target))
        return NotOnOffer;
    Atom type = None;
    if (!takeProperty(d, w, atoms, out, type))
        return NotOnOffer;
    if (type != atoms.incr)
        return out.size() > max ? TooLarge : Done;

    // Deleting the INCR property asked for the first piece; each deletion asks for the next.
    // Too much data is still read to the end, as some owners do not survive a requestor that
    // leaves in the middle.
    Bytes all, piece;
    bool over = false;
    for (;;) {
        XEvent event;
        if (!waitForEvent(d, w, PropertyNotify, event, [&](XEvent const& e) {
                return e.xproperty.atom == atoms.transfer && e.xproperty.state == PropertyNewValue;
            }))
            return Failed;
        if (!takeProperty(d, w, atoms, piece, type))
            return Failed;
        // The notice of the INCR property itself may still be queued: it names no property now.
        if (type == None)
            continue;
        if (piece.empty())
            break;
        over = over || all.size() + piece.size() > max;
        if (over)
            all.clear();
        else
            all.insert(all.end(), piece.begin(), piece.end());
    }
    out = std::move(all);
    return over ? TooLarge : Done;
}

int targets(Display* d)
{
    Atoms const atoms(d);
    Window const w = makeWindow(d);
    if (XGetSelectionOwner(d, atoms.clipboard) == None)
        return NotOnOffer;
    Bytes list;
    Atom type = None;
    if (!convert(d, w, atoms, atoms.targets) || !takeProperty(d, w, atoms, list, type) || type != XA_ATOM)
        return NotOnOffer;
    std::string text;
    for (std::size_t i = 0; i + 4 <= list.size(); i += 4) {
        std::uint32_t atom = 0;
        std::memcpy(&atom, list.data() + i, 4);
        if (char* name = XGetAtomName(d, atom)) {
            text += name;
            text += '\n';
            XFree(name);
        }
    }
    return WriteAll(STDOUT_FILENO, text.data(), text.size()) == text.size() ? Done : Failed;
}

int get(Display* d, char const* maxText, char** names, int count)
{
    char* end = nullptr;
    unsigned long long const max = std::strtoull(maxText, &end, 10);
    if (end == maxText || *end != 0)
        return Failed;
    Atoms const atoms(d);
    Window const w = makeWindow(d);
    if (XGetSelectionOwner(d, atoms.clipboard) == None)
        return NotOnOffer;
    for (int i = 0; i < count; ++i) {
        Bytes data;
        int const result = fetch(d, w, atoms, XInternAtom(d, names[i], False), std::size_t(max), data);
        if (result == NotOnOffer)
            continue;
        if (result != Done)
            return result;
        return WriteAll(STDOUT_FILENO, data.data(), data.size()) == data.size() ? Done : Failed;
    }
    return NotOnOffer;
}

} // namespace

int main(int argc, char** argv)
{
    std::string const mode = argc > 1 ? argv[1] : "";
    if (mode != "serve" && mode != "targets" && !(mode == "get" && argc >= 4))
        return Failed;
    Display* d = XOpenDisplay(nullptr);
    if (!d)
        return NoDisplay;
    XSetErrorHandler(ignoreErrors);
    XSetIOErrorHandler(displayLost);
    int const result = mode == "serve" ? serve(d) : mode == "targets" ? targets(d) : get(d, argv[2], argv + 3, argc - 3);
    XCloseDisplay(d);
    return result;
}
