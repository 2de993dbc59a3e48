// The verbs that this floor adds to the command language: FORMAT, COLUMNIZE and the services on lines.
#pragma once

// Call once at start-up; a second call does nothing.
void AddFormatVerbs();
