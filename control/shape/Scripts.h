// Which characters are shown otherwise beside others: letters that join their neighbours, and those read from right to left.
#pragma once

#include <QChar>

namespace shape {

// Whether it may be either; below kFirstSpecial never.
constexpr char32_t kFirstSpecial = 0x590;
bool isSpecial(char32_t code);
// A letter or mark that is drawn together with its neighbours of the same script.
bool joins(char32_t code);
bool isRightToLeft(char32_t code);       // a letter
bool turns(char32_t code);               // one of them, or a digit that follows them
QChar::Script scriptOf(char32_t code);   // of one that joins

}   // namespace shape
