// What happens when memory runs out: the work that a person asked for is given up, the person is told, and the program goes on.
// Every change of a text is made whole or not at all, and an open group of them is taken back on the way out, so the texts are
// as they were. The entrances where a person's wishes come in (keys, menus, drops, buttons) run their work through withMemory.
#pragma once

#include <new>
#include <stdexcept>

// Shows the message box; needs little memory itself.
void tellNoMemory();

// False: memory ran out, and the person has been told.
template <class Work>
bool withMemory(Work&& work) {
  try {
    work();
    return true;
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {   // more than any memory could hold
  }
  tellNoMemory();
  return false;
}
