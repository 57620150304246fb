// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// Times a program from outside, by what the X server shows of it.
// usage: session_timer FIRST-TITLE KEY SECOND-TITLE PROGRAM
// Prints three times in milliseconds: from the start to the painted first window; from Return
// behind the typed key to the painted second one; from SIGTERM to the end of the program. With an
// empty key only the first. A window counts as painted when its picture has more than one colour,
// and a title is a part of the whole one. No window manager may run: it would hold the windows
// back.

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

double since(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

bool hasTitle(Display* display, Window window, const char* title) {
    XTextProperty property{};
    const Atom name = XInternAtom(display, "_NET_WM_NAME", False);
    if (XGetTextProperty(display, window, &property, name) == 0 || property.value == nullptr) {
        return false;
    }
    const bool isSame =
        std::strstr(reinterpret_cast<const char*>(property.value), title) != nullptr;
    XFree(property.value);
    return isSame;
}

bool isPainted(Display* display, Window window) {
    XWindowAttributes shape{};
    if (XGetWindowAttributes(display, window, &shape) == 0 || shape.map_state != IsViewable) {
        return false;
    }
    XImage* image = XGetImage(display, window, 0, 0, static_cast<unsigned>(shape.width),
                              static_cast<unsigned>(shape.height), AllPlanes, ZPixmap);
    if (image == nullptr) {
        return false;
    }
    const unsigned long first = XGetPixel(image, 0, 0);
    bool isMixed = false;
    for (int y = 0; y < shape.height && !isMixed; y += 3) {
        for (int x = 0; x < shape.width && !isMixed; ++x) {
            isMixed = XGetPixel(image, x, y) != first;
        }
    }
    XDestroyImage(image);
    return isMixed;
}

Window paintedWindow(Display* display, const char* title) {
    for (;;) {
        Window root = 0;
        Window parent = 0;
        Window* windows = nullptr;
        unsigned count = 0;
        XQueryTree(display, DefaultRootWindow(display), &root, &parent, &windows, &count);
        for (unsigned i = 0; i < count; ++i) {
            const Window window = windows[i];
            if (hasTitle(display, window, title) && isPainted(display, window)) {
                XFree(windows);
                return window;
            }
        }
        XFree(windows);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void press(Display* display, Window window, KeySym symbol) {
    XKeyEvent event{};
    event.display = display;
    event.window = window;
    event.root = DefaultRootWindow(display);
    event.same_screen = True;
    event.keycode = XKeysymToKeycode(display, symbol);
    const bool isPlain = XkbKeycodeToKeysym(display, event.keycode, 0, 0) == symbol;
    event.state = isPlain ? 0 : ShiftMask;
    for (const int type : {KeyPress, KeyRelease}) {
        event.type = type;
        XSendEvent(display, window, True, NoEventMask, reinterpret_cast<XEvent*>(&event));
    }
    XSync(display, False);
}

}  // namespace

int main(int count, char** words) {
    Display* display = XOpenDisplay(nullptr);
    if (count != 5 || display == nullptr) {
        return 2;
    }
    // A window may go while it is looked at.
    XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    Clock::time_point begin = Clock::now();
    const pid_t program = ::fork();
    if (program == 0) {
        ::execl(words[4], words[4], nullptr);
        ::_exit(127);
    }
    const Window first = paintedWindow(display, words[1]);
    std::printf("%.1f", since(begin));
    if (*words[2] != '\0') {
        // The form puts the focus into the box behind its first paint.
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        for (const char* letter = words[2]; *letter != '\0'; ++letter) {
            press(display, first, static_cast<KeySym>(*letter));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        begin = Clock::now();
        press(display, first, XK_Return);
        paintedWindow(display, words[3]);
        std::printf(" %.1f", since(begin));
    }
    begin = Clock::now();
    ::kill(program, SIGTERM);
    ::waitpid(program, nullptr, 0);
    if (*words[2] != '\0') {
        std::printf(" %.1f", since(begin));
    }
    std::printf("\n");
    return 0;
}
