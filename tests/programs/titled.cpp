// Shows a window with the title of its first argument, changes it to that of the second one after 300 ms, and ends with code 5
// when its window is asked to close, with 6 when that does not happen within two minutes.
#ifdef ZELKOR_XCB

#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

static xcb_atom_t atom(xcb_connection_t* c, const char* name) {
  auto* reply = xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, std::uint16_t(std::strlen(name)), name), nullptr);
  const xcb_atom_t value = reply->atom;
  std::free(reply);
  return value;
}

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  xcb_connection_t* c = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(c)) return 3;
  const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
  const xcb_window_t window = xcb_generate_id(c);
  xcb_create_window(c, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 100, 100, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    screen->root_visual, 0, nullptr);
  const std::uint32_t pid = std::uint32_t(::getpid());
  const xcb_atom_t protocols = atom(c, "WM_PROTOCOLS"), wish = atom(c, "WM_DELETE_WINDOW"), text = atom(c, "UTF8_STRING");
  const auto entitle = [&](const char* title) {
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, atom(c, "_NET_WM_NAME"), text, 8, std::uint32_t(std::strlen(title)),
                        title);
    xcb_flush(c);
  };
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, atom(c, "_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &pid);
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, protocols, XCB_ATOM_ATOM, 32, 1, &wish);
  entitle(argv[1]);
  xcb_map_window(c, window);
  xcb_flush(c);
  int code = 6;
  for (int tick = 0; tick < 1200 && code == 6; ++tick) {
    if (tick == 3) entitle(argv[2]);
    pollfd wait{xcb_get_file_descriptor(c), POLLIN, 0};
    ::poll(&wait, 1, 100);
    while (xcb_generic_event_t* event = xcb_poll_for_event(c)) {
      const auto* message = reinterpret_cast<const xcb_client_message_event_t*>(event);
      const bool asked =
          (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE && message->type == protocols && message->data.data32[0] == wish;
      std::free(event);
      if (asked) code = 5;
    }
  }
  xcb_disconnect(c);
  return code;
}

#else

int main() { return 1; }

#endif
