#include "process/ProgramWindow.h"

#if defined(ZELKOR_XCB)

#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Free {
  void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

constexpr unsigned kTitleLength = 256;

}   // namespace

struct ProgramWindow::Impl {
  xcb_connection_t* connection = nullptr;
  int screen = 0;
  xcb_window_t root = 0, found = 0;
  xcb_atom_t clientList = 0, pid = 0, name = 0, protocols = 0, deleteWindow = 0, closeWindow = 0;

  Impl() {
    if (!std::getenv("DISPLAY")) return;
    connection = xcb_connect(nullptr, &screen);
    if (xcb_connection_has_error(connection)) {
      drop();
      return;
    }
    auto roots = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int n = screen; n > 0 && roots.rem; --n) xcb_screen_next(&roots);
    if (!roots.rem) {
      drop();
      return;
    }
    root = roots.data->root;
    clientList = atom("_NET_CLIENT_LIST");
    pid = atom("_NET_WM_PID");
    name = atom("_NET_WM_NAME");
    protocols = atom("WM_PROTOCOLS");
    deleteWindow = atom("WM_DELETE_WINDOW");
    closeWindow = atom("_NET_CLOSE_WINDOW");
  }
  ~Impl() { drop(); }

  void drop() {
    if (connection) xcb_disconnect(connection);
    connection = nullptr;
  }

  xcb_atom_t atom(std::string_view text) {
    const auto cookie = xcb_intern_atom(connection, 0, std::uint16_t(text.size()), text.data());
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
  }

  std::string property(xcb_window_t window, xcb_atom_t which, unsigned words) {
    const auto cookie = xcb_get_property(connection, 0, window, which, XCB_GET_PROPERTY_TYPE_ANY, 0, words);
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())), std::size_t(xcb_get_property_value_length(reply.get()))};
  }

  std::vector<xcb_window_t> windows() {
    std::vector<xcb_window_t> list;
    const std::string managed = property(root, clientList, 4096);
    list.resize(managed.size() / sizeof(xcb_window_t));
    if (!list.empty()) {
      std::memcpy(list.data(), managed.data(), list.size() * sizeof(xcb_window_t));
      return list;
    }
    // Without a list from the window manager: the windows directly below the root.
    const Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection, xcb_query_tree(connection, root), nullptr));
    if (tree)
      list.assign(xcb_query_tree_children(tree.get()),
                  xcb_query_tree_children(tree.get()) + xcb_query_tree_children_length(tree.get()));
    return list;
  }

  bool belongs(xcb_window_t window, qint64 processId) {
    const std::string bytes = property(window, pid, 1);
    std::uint32_t owner = 0;
    if (bytes.size() != sizeof owner) return false;
    std::memcpy(&owner, bytes.data(), sizeof owner);
    return owner == processId || ::getpgid(pid_t(owner)) == processId;
  }

  void send(xcb_window_t to, xcb_window_t window, xcb_atom_t type, std::uint32_t first, std::uint32_t mask) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = type;
    event.data.data32[0] = first;
    event.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(connection, 0, to, mask, reinterpret_cast<const char*>(&event));
    xcb_flush(connection);
  }
};

ProgramWindow::ProgramWindow() : impl_(std::make_unique<Impl>()) {}
ProgramWindow::~ProgramWindow() = default;

QString ProgramWindow::title(qint64 processId) {
  impl_->found = 0;
  if (!impl_->connection || xcb_connection_has_error(impl_->connection)) return {};
  for (const xcb_window_t window : impl_->windows()) {
    if (!impl_->belongs(window, processId)) continue;
    std::string title = impl_->property(window, impl_->name, kTitleLength);
    if (title.empty()) title = impl_->property(window, XCB_ATOM_WM_NAME, kTitleLength);
    if (title.empty()) continue;   // helper windows of tool kits have no title
    impl_->found = window;
    return QString::fromUtf8(title.data(), qsizetype(title.size())).left(qsizetype(kTitleLength));
  }
  return {};
}

void ProgramWindow::close() {
  if (!impl_->found) return;
  const std::string list = impl_->property(impl_->found, impl_->protocols, 64);
  bool takesDelete = false;
  for (std::size_t at = 0; at + sizeof(xcb_atom_t) <= list.size(); at += sizeof(xcb_atom_t)) {
    xcb_atom_t one = 0;
    std::memcpy(&one, list.data() + at, sizeof one);
    takesDelete = takesDelete || one == impl_->deleteWindow;
  }
  if (takesDelete) impl_->send(impl_->found, impl_->found, impl_->protocols, impl_->deleteWindow, XCB_EVENT_MASK_NO_EVENT);
  else
    impl_->send(impl_->root, impl_->found, impl_->closeWindow, XCB_CURRENT_TIME,
                XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
}

#elif defined(_WIN32)

#include <windows.h>

struct ProgramWindow::Impl {
  HWND found = nullptr;
};

ProgramWindow::ProgramWindow() : impl_(std::make_unique<Impl>()) {}
ProgramWindow::~ProgramWindow() = default;

QString ProgramWindow::title(qint64 processId) {
  impl_->found = nullptr;
  for (HWND window = FindWindowW(nullptr, nullptr); window; window = GetWindow(window, GW_HWNDNEXT)) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (GetParent(window) || owner != DWORD(processId)) continue;
    wchar_t text[257] = {};
    const int length = GetWindowTextW(window, text, 257);
    impl_->found = window;
    return QString::fromWCharArray(text, length);
  }
  return {};
}

void ProgramWindow::close() {
  if (impl_->found) SendMessageW(impl_->found, WM_CLOSE, 0, 0);
}

#else

struct ProgramWindow::Impl {};
ProgramWindow::ProgramWindow() = default;
ProgramWindow::~ProgramWindow() = default;
QString ProgramWindow::title(qint64) { return {}; }
void ProgramWindow::close() {}

#endif
