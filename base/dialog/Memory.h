// What happens when memory runs out: the current operation is abandoned, the user is told, and the program continues. Every change
// of a text is applied whole or not at all; an open group of changes is rolled back by the exception. So the texts are as they were
// before. All entry points of user actions (keys, menus, drops, buttons) run their work through withMemory.
#pragma once

#include <new>
#include <stdexcept>

// Shows the message box; needs little memory itself.
void tellNoMemory();

// False: memory ran out, and the user has been told.
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
