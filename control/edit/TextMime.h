// Text on the clipboard and in a drag: plain text for other programs; for this program the exact bytes (also those that are not
// UTF-8), marked if they are a rectangular block.
#pragma once

#include <QMimeData>
#include <memory>

#include "text/store/Snapshot.h"

namespace TextMime {
// The text as toQString returns it.
std::unique_ptr<QMimeData> make(const QString& text, bool block);
// Text that is copied from the snapshot only on request: for the mouse selection.
std::unique_ptr<QMimeData> makeLazy(const text::Snapshot& snapshot, text::ByteRange range);
// The text that several carets have copied, marked with the piece of each.
std::unique_ptr<QMimeData> make(const QString& text, const QStringList& pieces);
QStringList pieces(const QMimeData* data);   // empty when several carets did not copy it
bool hasText(const QMimeData* data);
QString read(const QMimeData* data, bool* block);   // empty when there is no text
}   // namespace TextMime
