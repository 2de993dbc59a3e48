#include "document/Frame.h"

namespace {
Frame* theFrame = nullptr;
}

Frame* frame() { return theFrame; }
void setFrame(Frame* frame) { theFrame = frame; }
