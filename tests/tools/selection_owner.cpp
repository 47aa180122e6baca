// orvantis_selection_owner: another client that owns the CLIPBOARD selection and writes down
// every target it is asked for, for the tests that check what the program fetches.
//
//   orvantis_selection_owner --text TEXT --log FILE [--marker concealed|hint|none]
//
// Takes the CLIPBOARD with TEXT under UTF8_STRING, text/plain;charset=utf-8 and text/plain,
// marked secret the way a password manager does: with org.nspasteboard.ConcealedType (byte
// 0x01, "concealed", the default) or with x-kde-passwordManagerHint "secret" ("hint"). Prints
// "owned" once it holds the selection. For each request it appends a line to FILE: the
// target's name, a tab, and the name of the requesting window (empty when it has none). Runs
// until it loses the selection or is ended.

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace {

std::string windowName(Display* display, Window window) {
    char* name = nullptr;
    std::string result;
    if (XFetchName(display, window, &name) != 0 && name != nullptr) {
        result = name;
        XFree(name);
    }
    return result;
}

int usage() {
    std::fprintf(stderr, "usage: orvantis_selection_owner --text TEXT --log FILE [--marker concealed|hint|none]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    std::string text, logPath, marker = "concealed";
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--text") == 0) text = argv[i + 1];
        else if (std::strcmp(argv[i], "--log") == 0) logPath = argv[i + 1];
        else if (std::strcmp(argv[i], "--marker") == 0) marker = argv[i + 1];
        else return usage();
    }
    if (logPath.empty() || (argc - 1) % 2 != 0) return usage();

    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        std::fprintf(stderr, "orvantis_selection_owner: no X display\n");
        return 1;
    }
    std::vector<std::pair<std::string, std::string>> targets{
        {"UTF8_STRING", text}, {"text/plain;charset=utf-8", text}, {"text/plain", text}};
    if (marker == "concealed") targets.emplace_back("org.nspasteboard.ConcealedType", std::string("\x01", 1));
    else if (marker == "hint") targets.emplace_back("x-kde-passwordManagerHint", "secret");

    const Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0);
    XStoreName(display, window, "selection owner");
    const Atom clipboard = XInternAtom(display, "CLIPBOARD", False);
    const Atom targetsAtom = XInternAtom(display, "TARGETS", False);
    const Atom timestampAtom = XInternAtom(display, "TIMESTAMP", False);
    XSetSelectionOwner(display, clipboard, window, CurrentTime);
    if (XGetSelectionOwner(display, clipboard) != window) {
        std::fprintf(stderr, "orvantis_selection_owner: the selection was refused\n");
        return 1;
    }
    std::printf("owned\n");
    std::fflush(stdout);

    for (;;) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == SelectionClear) return 0;
        if (event.type != SelectionRequest) continue;
        const XSelectionRequestEvent& request = event.xselectionrequest;
        char* name = XGetAtomName(display, request.target);
        const std::string targetName = name != nullptr ? name : "";
        if (name != nullptr) XFree(name);
        if (FILE* log = std::fopen(logPath.c_str(), "a")) {
            std::fprintf(log, "%s\t%s\n", targetName.c_str(), windowName(display, request.requestor).c_str());
            std::fclose(log);
        }
        XSelectionEvent reply{};
        reply.type = SelectionNotify;
        reply.requestor = request.requestor;
        reply.selection = request.selection;
        reply.target = request.target;
        reply.time = request.time;
        reply.property = None;
        const Atom property = request.property != None ? request.property : request.target;
        if (request.target == targetsAtom) {
            std::vector<Atom> list{targetsAtom, timestampAtom};
            for (const auto& [target, bytes] : targets) list.push_back(XInternAtom(display, target.c_str(), False));
            XChangeProperty(display, request.requestor, property, XA_ATOM, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(list.data()), static_cast<int>(list.size()));
            reply.property = property;
        } else {
            for (const auto& [target, bytes] : targets) {
                if (target != targetName) continue;
                XChangeProperty(display, request.requestor, property, request.target, 8, PropModeReplace,
                                reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
                reply.property = property;
                break;
            }
        }
        XSendEvent(display, request.requestor, False, NoEventMask, reinterpret_cast<XEvent*>(&reply));
        XFlush(display);
    }
}
