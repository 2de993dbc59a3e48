// The user's own search. A search by the program itself (the word list at the caret) may leave its texts in searchState(); they are
// restored to the user's before the next search by the user.
#pragma once

#include "control/edit/Editor.h"

// searchState() with the user's texts restored, for searches by the user.
SearchState& usersSearch();
// From now on searchState() holds texts of the program; `users` will be restored.
void lendSearch(SearchState users);
