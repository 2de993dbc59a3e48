// Text on the clipboard and in a drag: plain text for other programs, and for ourselves the exact bytes (those that are no
// UTF-8 too) with the word whether they are a rectangular block.
#pragma once

#include <QMimeData>
#include <memory>

#include "text/store/Snapshot.h"

namespace TextMime {
// The text comes as toQString gives it.
std::unique_ptr<QMimeData> make(const QString& text, bool block);
// Text that is copied out of the snapshot only when somebody asks: for the selection of the mouse.
std::unique_ptr<QMimeData> makeLazy(const text::Snapshot& snapshot, text::ByteRange range);
bool hasText(const QMimeData* data);
QString read(const QMimeData* data, bool* block);   // empty when there is no text
}   // namespace TextMime
