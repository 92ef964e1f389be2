"""Asks a window whether its program still looks at its events, as window managers do (_NET_WM_PING of the
Extended Window Manager Hints), and how long the answer takes."""

import ctypes
import time

X = ctypes.CDLL("libX11.so.6")
CLIENT_MESSAGE = 33
SUBSTRUCTURE_NOTIFY = 1 << 19


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("data", ctypes.c_long * 5), ("rest", ctypes.c_long * 12)]


X.XOpenDisplay.restype = ctypes.c_void_p
X.XDefaultRootWindow.restype = ctypes.c_ulong
X.XInternAtom.restype = ctypes.c_ulong
for call in (X.XDefaultRootWindow, X.XFlush, X.XPending, X.XCloseDisplay):
    call.argtypes = [ctypes.c_void_p]
X.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
X.XSelectInput.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_long]
X.XSendEvent.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_long, ctypes.c_void_p]
X.XNextEvent.argtypes = [ctypes.c_void_p, ctypes.c_void_p]
X.XClearArea.argtypes = [ctypes.c_void_p, ctypes.c_ulong] + [ctypes.c_int] * 5


class WindowPing:
    def __init__(self, display_name, window):
        self.display = X.XOpenDisplay(display_name.encode())
        self.window = window
        self.root = X.XDefaultRootWindow(self.display)
        self.protocols = X.XInternAtom(self.display, b"WM_PROTOCOLS", 0)
        self.ping = X.XInternAtom(self.display, b"_NET_WM_PING", 0)
        X.XSelectInput(self.display, self.root, SUBSTRUCTURE_NOTIFY)
        self.count = 0

    def close(self):
        X.XCloseDisplay(self.display)

    def seconds(self, patience=30):
        """Makes the window paint itself anew and answers how long it takes until that is done: events are served
        in their order."""
        self.count += 1
        X.XClearArea(self.display, self.window, 0, 0, 0, 0, 1)
        question = ClientMessage(type=CLIENT_MESSAGE, window=self.window, message_type=self.protocols, format=32)
        question.data[0] = self.ping
        question.data[1] = self.count
        question.data[2] = self.window
        begun = time.monotonic()
        X.XSendEvent(self.display, self.window, 0, 0, ctypes.byref(question))
        X.XFlush(self.display)
        answer = ClientMessage()
        while time.monotonic() - begun < patience:
            if not X.XPending(self.display):
                time.sleep(0.0005)
                continue
            X.XNextEvent(self.display, ctypes.byref(answer))
            if answer.type == CLIENT_MESSAGE and answer.data[0] == self.ping and answer.data[1] == self.count:
                return time.monotonic() - begun
        return float("inf")
