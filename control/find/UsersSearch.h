// The user's own search. What the program searches for by itself (the word list at the caret) may leave its texts in searchState()
// until something is searched for again; then the user's are back.
#pragma once

#include "control/edit/Editor.h"

// searchState() once the user's texts are back: for what the user searches for.
SearchState& usersSearch();
// From here on the texts of searchState() are the program's; `users` are to come back.
void lendSearch(SearchState users);
