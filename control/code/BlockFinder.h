// The blocks of one text (text/fold/Blocks.h), kept up to date beside the interface while somebody asks for them. Lives as long as the
// text.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>

#include "control/edit/TextModel.h"
#include "text/fold/Blocks.h"

class EditorHost;

class BlockFinder : public QObject {
  Q_OBJECT
 public:
  static constexpr std::int64_t kLargest = std::int64_t(1) << 30;   // bytes; a larger text has no blocks

  static BlockFinder& of(TextModel& model);
  ~BlockFinder() override;

  // Those of the present text. Null when they are not known yet: then found() follows.
  std::shared_ptr<const text::Blocks> known();
  // The same, read before it returns if need be, as long work of the host. Null: cancelled.
  std::shared_ptr<const text::Blocks> now(EditorHost& host);
  // Whether the words at the offset may open or close a block: a look at the word alone.
  bool mayBePair(text::ByteOffset at);

 signals:
  void found();

 private:
  struct Shared;
  struct Job;
  explicit BlockFinder(TextModel& model);
  void changed(const text::Change& change);
  void start();
  void follow();   // the language

  TextModel& model_;
  std::shared_ptr<Shared> shared_;
  std::shared_ptr<const text::FoldRules> rules_;
  QString language_;
  int generation_ = -1;
  std::shared_ptr<const text::Blocks> blocks_;   // of the present text; null: not known
  std::shared_ptr<Job> job_;
  QTimer later_;
  bool asked_ = false;
};
