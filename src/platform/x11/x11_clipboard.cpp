#include "platform/x11/x11_clipboard.h"

#include <algorithm>
#include <map>
#include <utility>

#include <poll.h>

#include "core/log/app_logger.h"
#include "platform/pasteboard_types.h"
#include "platform/x11/x11_display.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/Xfixes.h>

namespace orvantis::x11 {
namespace {

using Clock = std::chrono::steady_clock;

/// A property as read from a window: bytes for format 8, values for formats 16 and 32.
struct Property {
    Atom type = None;
    int format = 0;
    std::string bytes;
    std::vector<unsigned long> values;
};

}  // namespace

struct X11Clipboard::State {
    /// What the program has put on one selection, while it holds it.
    struct Owned {
        bool active = false;
        Time time = CurrentTime;
        std::vector<std::pair<Atom, std::string>> data;  ///< target, bytes, in the offered order
    };
    /// A read under way.
    struct Incoming {
        Atom selection = None;
        Atom target = None;
        bool incremental = false;
        bool done = false;
        bool failed = false;
        std::string data;
        Clock::time_point lastProgress;
    };
    /// Data going to another client in pieces.
    struct Outgoing {
        Window requestor = None;
        Atom property = None;
        Atom type = None;
        std::string data;
        std::size_t offset = 0;
        Clock::time_point lastProgress;
    };

    State(DisplayPointer d, platform::MainLoop& l, const LogCategory* lg) : display(std::move(d)), loop(l), log(lg) {}

    DisplayPointer display;
    platform::MainLoop& loop;
    const LogCategory* log;
    Window window = None;
    int xfixesEventBase = 0;
    std::size_t chunkSize = 0;

    Atom clipboard = None, primary = None, targets = None, timestamp = None, multiple = None, incr = None,
         atomPair = None, utf8String = None, stampProperty = None, transferProperty = None;
    std::map<std::string, Atom, std::less<>> atomsByName;
    std::map<Atom, std::string> namesByAtom;

    std::int64_t changeCount = 0;
    bool noticePending = false;
    bool dispatchPosted = false;
    int nesting = 0;
    CallbackList<> changed;

    Owned clipboardOwned;
    Owned primaryOwned;
    std::int64_t targetsCount = -1;
    std::vector<std::string> targetNames;

    Incoming* incoming = nullptr;
    bool stampWaiting = false;
    Time stampTime = CurrentTime;
    std::vector<Outgoing> outgoing;

    std::shared_ptr<bool> alive = std::make_shared<bool>(true);

    ~State() {
        if (display && window != None && !x11::connectionLost(display.get())) XDestroyWindow(display.get(), window);
    }

    Display* dpy() const { return display.get(); }
    bool lost() const { return x11::connectionLost(display.get()); }

    Atom atom(std::string_view name) {
        if (auto found = atomsByName.find(name); found != atomsByName.end()) return found->second;
        const std::string text(name);
        const Atom value = XInternAtom(dpy(), text.c_str(), False);
        atomsByName.emplace(text, value);
        namesByAtom.emplace(value, text);
        return value;
    }

    std::string name(Atom value) {
        if (auto found = namesByAtom.find(value); found != namesByAtom.end()) return found->second;
        std::string text;
        if (char* raw = value != None ? XGetAtomName(dpy(), value) : nullptr) {
            text = raw;
            XFree(raw);
        }
        namesByAtom.emplace(value, text);
        if (!text.empty()) atomsByName.emplace(text, value);
        return text;
    }

    /// Whether we hold `selection` now, asking the server: its notice that another client took
    /// it may still be on its way.
    bool holds(Atom selection) {
        Owned* owned = ownedFor(selection);
        if (owned == nullptr || !owned->active) return false;
        if (XGetSelectionOwner(dpy(), selection) == window) return true;
        *owned = Owned{};
        return false;
    }

    Owned* ownedFor(Atom selection) {
        if (selection == clipboard) return &clipboardOwned;
        if (selection == primary) return &primaryOwned;
        return nullptr;
    }

    // --- Events --------------------------------------------------------------------------

    void handle(XEvent& event) {
        if (event.type == xfixesEventBase + XFixesSelectionNotify) {
            selectionOwnerChanged(reinterpret_cast<const XFixesSelectionNotifyEvent&>(event));
            return;
        }
        switch (event.type) {
            case SelectionRequest: serve(event.xselectionrequest); break;
            case SelectionClear: {
                Owned* owned = ownedFor(event.xselectionclear.selection);
                if (owned != nullptr) *owned = Owned{};
                break;
            }
            case SelectionNotify: selectionArrived(event.xselection); break;
            case PropertyNotify: propertyChanged(event.xproperty); break;
            default: break;
        }
    }

    void selectionOwnerChanged(const XFixesSelectionNotifyEvent& event) {
        if (event.selection != clipboard) return;
        if (event.subtype == XFixesSetSelectionOwnerNotify) {
            // Our own write was counted when it was made.
            if (event.owner == window) return;
            // A claim older than ours, read only now: the server gave the selection to us after
            // it, and its content was never there to read.
            if (clipboardOwned.active && event.selection_timestamp < clipboardOwned.time) return;
        }
        ++changeCount;
        noticePending = true;
    }

    void selectionArrived(const XSelectionEvent& event) {
        Incoming* in = incoming;
        if (in == nullptr || in->done || event.requestor != window || event.selection != in->selection ||
            event.target != in->target) {
            return;
        }
        in->lastProgress = Clock::now();
        if (event.property == None) {
            in->failed = in->done = true;
            return;
        }
        std::optional<Property> property = readProperty(window, event.property, true);
        if (!property) {
            in->failed = in->done = true;
        } else if (property->type == incr) {
            // The owner sends the data in pieces, each when we have deleted the last one (done
            // by reading it).
            in->incremental = true;
        } else {
            in->data = std::move(property->bytes);
            if (property->format != 8) in->data = valuesAsBytes(*property);
            in->done = true;
        }
    }

    void propertyChanged(const XPropertyEvent& event) {
        if (event.window == window) {
            if (event.atom == stampProperty && event.state == PropertyNewValue && stampWaiting) {
                stampTime = event.time;
                stampWaiting = false;
                return;
            }
            Incoming* in = incoming;
            if (in != nullptr && in->incremental && !in->done && event.atom == transferProperty &&
                event.state == PropertyNewValue) {
                in->lastProgress = Clock::now();
                std::optional<Property> piece = readProperty(window, transferProperty, true);
                if (!piece) {
                    in->failed = in->done = true;
                } else if (piece->bytes.empty() && piece->values.empty()) {
                    in->done = true;
                } else {
                    in->data += piece->format == 8 ? piece->bytes : valuesAsBytes(*piece);
                }
            }
            return;
        }
        if (event.state != PropertyDelete) return;
        for (auto it = outgoing.begin(); it != outgoing.end(); ++it) {
            if (it->requestor != event.window || it->property != event.atom) continue;
            const std::size_t length = std::min(chunkSize, it->data.size() - it->offset);
            XChangeProperty(dpy(), it->requestor, it->property, it->type, 8, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(it->data.data() + it->offset),
                            static_cast<int>(length));
            it->offset += length;
            it->lastProgress = Clock::now();
            // The last piece is the empty one.
            if (length == 0) {
                const Window requestor = it->requestor;
                outgoing.erase(it);
                stopWatchingIfIdle(requestor);
            }
            XFlush(dpy());
            return;
        }
    }

    void stopWatchingIfIdle(Window requestor) {
        const bool busy = std::any_of(outgoing.begin(), outgoing.end(),
                                      [requestor](const Outgoing& o) { return o.requestor == requestor; });
        if (!busy) XSelectInput(dpy(), requestor, NoEventMask);
    }

    static std::string valuesAsBytes(const Property& property) {
        // Only byte data is content; other formats are passed on as their native bytes.
        std::string bytes;
        for (unsigned long value : property.values) {
            const auto v = static_cast<std::uint32_t>(value);
            bytes.append(reinterpret_cast<const char*>(&v), property.format == 16 ? 2 : 4);
        }
        return bytes;
    }

    std::optional<Property> readProperty(Window owner, Atom name, bool remove) {
        Property result;
        long offset = 0;  // in 32-bit units
        for (;;) {
            Atom type = None;
            int format = 0;
            unsigned long items = 0, after = 0;
            unsigned char* data = nullptr;
            // A quarter of a megabyte (in 32-bit units) each round.
            if (XGetWindowProperty(dpy(), owner, name, offset, 65536, False, AnyPropertyType, &type, &format, &items,
                                   &after, &data) != Success) {
                return std::nullopt;
            }
            result.type = type;
            result.format = format;
            if (data != nullptr) {
                if (format == 8) {
                    result.bytes.append(reinterpret_cast<const char*>(data), items);
                } else if (format == 16) {
                    const auto* shorts = reinterpret_cast<const unsigned short*>(data);
                    result.values.insert(result.values.end(), shorts, shorts + items);
                } else if (format == 32) {
                    // Xlib hands format-32 data out as longs.
                    const auto* longs = reinterpret_cast<const unsigned long*>(data);
                    result.values.insert(result.values.end(), longs, longs + items);
                }
                XFree(data);
            }
            if (after == 0 || format == 0) break;
            offset += static_cast<long>(items * static_cast<unsigned long>(format) / 32);
        }
        if (remove) XDeleteProperty(dpy(), owner, name);
        return result;
    }

    // --- Serving our selections --------------------------------------------------------------

    void serve(const XSelectionRequestEvent& request) {
        XSelectionEvent reply{};
        reply.type = SelectionNotify;
        reply.display = dpy();
        reply.requestor = request.requestor;
        reply.selection = request.selection;
        reply.target = request.target;
        reply.time = request.time;
        reply.property = None;
        // Obsolete clients name no property: the target stands for it.
        const Atom property = request.property == None ? request.target : request.property;
        Owned* owned = ownedFor(request.selection);
        // Requests are answered whatever their time: toolkits stamp them with the time of the
        // last event they saw, which may be older than our claim.
        if (owned != nullptr && owned->active) {
            if (request.target == multiple) {
                if (request.property != None && serveMultiple(*owned, request.requestor, request.property))
                    reply.property = request.property;
            } else if (convertInto(*owned, request.requestor, request.target, property)) {
                reply.property = property;
            }
        }
        XSendEvent(dpy(), request.requestor, False, NoEventMask, reinterpret_cast<XEvent*>(&reply));
        XFlush(dpy());
    }

    bool serveMultiple(Owned& owned, Window requestor, Atom property) {
        std::optional<Property> pairs = readProperty(requestor, property, false);
        if (!pairs || pairs->format != 32) return false;
        std::vector<unsigned long> values = pairs->values;
        for (std::size_t i = 0; i + 1 < values.size(); i += 2) {
            if (values[i] == multiple || !convertInto(owned, requestor, values[i], values[i + 1])) values[i + 1] = None;
        }
        XChangeProperty(dpy(), requestor, property, atomPair, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(values.data()), static_cast<int>(values.size()));
        return true;
    }

    bool convertInto(Owned& owned, Window requestor, Atom target, Atom property) {
        if (target == targets) {
            std::vector<unsigned long> list{targets, timestamp, multiple};
            for (const auto& [offered, bytes] : owned.data) list.push_back(offered);
            XChangeProperty(dpy(), requestor, property, XA_ATOM, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(list.data()), static_cast<int>(list.size()));
            return true;
        }
        if (target == timestamp) {
            const unsigned long time = owned.time;
            XChangeProperty(dpy(), requestor, property, XA_INTEGER, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(&time), 1);
            return true;
        }
        const auto found = std::find_if(owned.data.begin(), owned.data.end(),
                                        [target](const auto& entry) { return entry.first == target; });
        if (found == owned.data.end()) return false;
        const std::string& bytes = found->second;
        if (bytes.size() > chunkSize) {
            // Too large for one request: announce the size, then a piece each time the requestor
            // has deleted the last one.
            XSelectInput(dpy(), requestor, PropertyChangeMask);
            const unsigned long size = bytes.size();
            XChangeProperty(dpy(), requestor, property, incr, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(&size), 1);
            dropStaleTransfers();
            outgoing.push_back(Outgoing{requestor, property, target, bytes, 0, Clock::now()});
            return true;
        }
        XChangeProperty(dpy(), requestor, property, target, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
        return true;
    }

    /// Transfers whose requestor stopped taking pieces (it quit, or gave up).
    void dropStaleTransfers() {
        const auto limit = Clock::now() - std::chrono::seconds(10);
        std::vector<Window> dropped;
        std::erase_if(outgoing, [&](const Outgoing& o) {
            if (o.lastProgress >= limit) return false;
            dropped.push_back(o.requestor);
            return true;
        });
        for (Window requestor : dropped) stopWatchingIfIdle(requestor);
    }

    // --- Waiting --------------------------------------------------------------------------

    /// Handles events until `done` answers true, or the time-out has passed since `progress`
    /// last moved. Answers `done`.
    template <typename Done, typename Progress>
    bool waitFor(Done done, Progress progress) {
        ++nesting;
        while (!done() && !lost()) {
            while (!done() && XPending(dpy()) > 0) {
                XEvent event;
                XNextEvent(dpy(), &event);
                handle(event);
            }
            if (done() || lost()) break;
            const auto remaining =
                std::chrono::duration_cast<std::chrono::milliseconds>(progress() + kTransferTimeout - Clock::now());
            if (remaining.count() <= 0) break;
            pollfd descriptor{ConnectionNumber(dpy()), POLLIN, 0};
            ::poll(&descriptor, 1, static_cast<int>(remaining.count()) + 1);
        }
        --nesting;
        scheduleDispatch();
        return done();
    }

    /// Handles what has arrived without telling of changes (they are told in a later turn).
    void pump() {
        if (lost()) return;
        ++nesting;
        while (XPending(dpy()) > 0) {
            XEvent event;
            XNextEvent(dpy(), &event);
            handle(event);
        }
        --nesting;
    }

    /// Events read into the connection's queue in the course of a call leave the descriptor
    /// quiet, and notices must not run inside the call: both wait for a later turn.
    void scheduleDispatch();
    /// Handles what has arrived, then tells of changes; not within a call of ours.
    void dispatch();

    // --- Reading another client's selection ------------------------------------------------

    std::optional<std::string> convert(Atom selection, Atom target) {
        if (lost()) return std::nullopt;
        Incoming in;
        in.selection = selection;
        in.target = target;
        in.lastProgress = Clock::now();
        incoming = &in;
        XDeleteProperty(dpy(), window, transferProperty);
        XConvertSelection(dpy(), selection, target, transferProperty, window, CurrentTime);
        XFlush(dpy());
        const bool finished = waitFor([&in] { return in.done; }, [&in] { return in.lastProgress; });
        incoming = nullptr;
        if (!finished) {
            if (log != nullptr) log->warning("clipboard: the owner of the selection did not answer within 1 s");
            return std::nullopt;
        }
        if (in.failed) return std::nullopt;
        return std::move(in.data);
    }

    const std::vector<std::string>& offeredTargets() {
        pump();
        if (targetsCount == changeCount) return targetNames;
        targetNames.clear();
        targetsCount = changeCount;
        if (XGetSelectionOwner(dpy(), clipboard) == None) return targetNames;
        const std::optional<std::string> raw = convert(clipboard, targets);
        if (!raw) {
            // Asked again next time: the owner may have been busy.
            targetsCount = -1;
            return targetNames;
        }
        // The atoms came as 32-bit values, flattened to bytes.
        for (std::size_t i = 0; i + 4 <= raw->size(); i += 4) {
            std::uint32_t value = 0;
            std::copy_n(raw->data() + i, 4, reinterpret_cast<char*>(&value));
            std::string targetName = name(static_cast<Atom>(value));
            if (!targetName.empty()) targetNames.push_back(std::move(targetName));
        }
        // The count may have moved while we waited: then these targets may be the old owner's.
        if (targetsCount != changeCount) targetsCount = -1;
        return targetNames;
    }

    // --- Taking a selection ------------------------------------------------------------------

    /// A server time later than every claim the server has handled so far: the time of a
    /// change of a property of our own. CurrentTime when the server does not answer.
    Time freshTimestamp() {
        stampWaiting = true;
        stampTime = CurrentTime;
        XChangeProperty(dpy(), window, stampProperty, XA_ATOM, 8, PropModeAppend, nullptr, 0);
        XFlush(dpy());
        const auto started = Clock::now();
        waitFor([this] { return !stampWaiting; }, [started] { return started; });
        stampWaiting = false;
        return stampTime;
    }

    bool own(Atom selection, std::vector<std::pair<Atom, std::string>> data) {
        if (lost()) return false;
        // Claims that came before are counted before ours.
        pump();
        const Time time = freshTimestamp();
        if (time == CurrentTime) {
            if (log != nullptr) log->warning("clipboard: no server time for a selection; nothing was written");
            return false;
        }
        Owned& owned = *ownedFor(selection);
        owned.active = true;
        owned.time = time;
        owned.data = std::move(data);
        XSetSelectionOwner(dpy(), selection, window, time);
        if (XGetSelectionOwner(dpy(), selection) != window) {
            owned = Owned{};
            if (log != nullptr) log->warning("clipboard: the X server did not give us the selection");
            return false;
        }
        return true;
    }

    std::vector<std::pair<Atom, std::string>> textTargets(std::string_view utf8) {
        std::vector<std::pair<Atom, std::string>> data;
        for (const std::string& mime : platform::mimesForType(platform::pasteboard_type::kText))
            data.emplace_back(atom(mime), std::string(utf8));
        return data;
    }

    // --- What the program owns ---------------------------------------------------------------

    std::optional<std::string> ownedData(const Owned& owned, std::string_view type) {
        for (const std::string& target : platform::targetsForType(type)) {
            for (const auto& [offered, bytes] : owned.data)
                if (name(offered) == target) return bytes;
        }
        return std::nullopt;
    }
};

void X11Clipboard::State::scheduleDispatch() {
    if (nesting > 0 || dispatchPosted || lost()) return;
    if (!noticePending && XQLength(dpy()) == 0) return;
    dispatchPosted = true;
    loop.post([this, weak = std::weak_ptr<bool>(alive)] {
        if (!weak.lock()) return;
        dispatchPosted = false;
        dispatch();
    });
}

void X11Clipboard::State::dispatch() {
    if (lost() || nesting > 0) return;
    pump();
    if (noticePending) {
        noticePending = false;
        changed.notify();
    }
    scheduleDispatch();
}

std::unique_ptr<X11Clipboard> X11Clipboard::open(const char* displayName, platform::MainLoop& loop,
                                                 const LogCategory* log) {
    DisplayPointer display = openDisplay(displayName);
    if (!display) return nullptr;
    int eventBase = 0, errorBase = 0;
    if (!XFixesQueryExtension(display.get(), &eventBase, &errorBase)) return nullptr;
    int major = 2, minor = 0;
    XFixesQueryVersion(display.get(), &major, &minor);

    auto state = std::make_unique<State>(std::move(display), loop, log);
    Display* d = state->dpy();
    state->xfixesEventBase = eventBase;
    // One request's worth of data, less the request's own header; more goes in pieces.
    state->chunkSize = static_cast<std::size_t>(XMaxRequestSize(d)) * 4 - 100;
    state->window = XCreateSimpleWindow(d, DefaultRootWindow(d), -10, -10, 1, 1, 0, 0, 0);
    XSelectInput(d, state->window, PropertyChangeMask);
    XStoreName(d, state->window, "Orvantis clipboard");
    state->clipboard = state->atom("CLIPBOARD");
    state->primary = XA_PRIMARY;
    state->targets = state->atom("TARGETS");
    state->timestamp = state->atom("TIMESTAMP");
    state->multiple = state->atom("MULTIPLE");
    state->incr = state->atom("INCR");
    state->atomPair = state->atom("ATOM_PAIR");
    state->utf8String = state->atom("UTF8_STRING");
    state->stampProperty = state->atom("_ORVANTIS_TIMESTAMP");
    state->transferProperty = state->atom("_ORVANTIS_SELECTION");
    XFixesSelectSelectionInput(d, state->window, state->clipboard,
                               XFixesSetSelectionOwnerNotifyMask | XFixesSelectionWindowDestroyNotifyMask |
                                   XFixesSelectionClientCloseNotifyMask);
    XSync(d, False);
    return std::unique_ptr<X11Clipboard>(new X11Clipboard(std::move(state)));
}

X11Clipboard::X11Clipboard(std::unique_ptr<State> state) : state_(std::move(state)) {}

X11Clipboard::~X11Clipboard() = default;

std::int64_t X11Clipboard::changeCount() const { return state_->changeCount; }

std::vector<std::string> X11Clipboard::types() const {
    State& s = *state_;
    std::vector<std::string> names;
    s.pump();
    if (s.holds(s.clipboard)) {
        for (const auto& [offered, bytes] : s.clipboardOwned.data) names.push_back(s.name(offered));
    } else {
        names = s.offeredTargets();
    }
    std::vector<std::string> result;
    for (const std::string& target : names) {
        if (!platform::isContentTarget(target)) continue;
        std::string typeName = platform::typeForMime(target);
        if (std::find(result.begin(), result.end(), typeName) == result.end()) result.push_back(std::move(typeName));
    }
    s.scheduleDispatch();
    return result;
}

std::optional<std::string> X11Clipboard::data(std::string_view type) const {
    State& s = *state_;
    s.pump();
    if (s.holds(s.clipboard)) {
        auto result = s.ownedData(s.clipboardOwned, type);
        s.scheduleDispatch();
        return result;
    }
    // Only a target the owner offers, and only the first that stands for the type, is asked for.
    const std::vector<std::string> offered = s.offeredTargets();
    std::optional<std::string> result;
    for (const std::string& target : platform::targetsForType(type)) {
        if (std::find(offered.begin(), offered.end(), target) == offered.end()) continue;
        result = s.convert(s.clipboard, s.atom(target));
        if (result && target == "STRING") result = platform::latin1ToUtf8(*result);
        break;
    }
    s.scheduleDispatch();
    return result;
}

void X11Clipboard::write(const platform::PasteboardItem& item) {
    State& s = *state_;
    std::vector<std::pair<Atom, std::string>> data;
    for (auto& [mime, bytes] : platform::nativeRepresentations(item)) data.emplace_back(s.atom(mime), std::move(bytes));
    s.own(s.clipboard, std::move(data));
    // Counted here, once: the server's notice of our own claim is not counted again. Told of in
    // a later turn, as another client's copy is.
    ++s.changeCount;
    s.noticePending = true;
    s.scheduleDispatch();
}

Subscription X11Clipboard::onChange(std::function<void()> callback) { return state_->changed.add(std::move(callback)); }

std::optional<std::string> X11Clipboard::selectionText() const {
    State& s = *state_;
    s.pump();
    std::optional<std::string> result;
    if (s.holds(s.primary)) {
        result = s.ownedData(s.primaryOwned, platform::pasteboard_type::kText);
    } else if (XGetSelectionOwner(s.dpy(), s.primary) != None) {
        result = s.convert(s.primary, s.utf8String);
        if (!result && !s.lost()) {
            if (auto latin1 = s.convert(s.primary, XA_STRING)) result = platform::latin1ToUtf8(*latin1);
        }
    }
    s.scheduleDispatch();
    return result;
}

void X11Clipboard::setSelectionText(std::string_view utf8) {
    State& s = *state_;
    s.own(s.primary, s.textTargets(utf8));
    s.scheduleDispatch();
}

int X11Clipboard::fileDescriptor() const { return ConnectionNumber(state_->dpy()); }

void X11Clipboard::dispatchPending() { state_->dispatch(); }

bool X11Clipboard::connectionLost() const { return state_->lost(); }

}  // namespace orvantis::x11
