// What a search in files looks for and where, as a value: made on the interface thread, used on another one.
#pragma once

#include <QList>
#include <QString>
#include <memory>
#include <string>
#include <vector>

#include "folder/ReplaceInFiles.h"
#include "folder/Walk.h"

class frmDocument;

// "1 hit", "2 hits" and so on.
QString countedHits(std::int64_t number);
QString countedFiles(std::int64_t number);
QString countedChanges(std::int64_t number);

// How many files and folders could not be searched beyond those that are named; binary files are not counted.
std::int64_t notNamed(const folder::FindSummary& found, const folder::WalkReport& walked);

struct FindTask {
  enum class Where { folder, openDocuments, files };
  Where where = Where::folder;
  std::shared_ptr<const folder::FindText> what;
  std::string root;                 // folder: searched; else what shown names are taken against; may be empty
  folder::WalkOptions walk;         // folder
  std::vector<std::string> files;   // files: whole names, in order; openDocuments: of those that are not loaded
  std::string filesOf;              // files: what names them, for the user: "the file list all.f"
  bool binary = false;              // binary files too
  std::string masks;                // of names, as the user wrote them
  std::int64_t mostHits = 0;        // 0: all

  struct Open {
    std::string path;   // whole; of a document without a file its title
    bool hasFile = false;
    text::Snapshot text;
  };
  std::vector<Open> open;   // all texts that are open: they stand for their files

  void setMasks(const std::string& text);
  void addOpen(const QList<frmDocument*>& documents);
  folder::FindRules rules() const;
  // Hands the items out; on the searching thread. What could not be looked into goes to `report`.
  void each(const std::function<bool(folder::FindItem)>& give, const text::SearchControl& control,
            folder::WalkReport* report) const;
  std::string shown(const std::string& path) const;   // below the root without it
  // All changes that replacing would make; open texts come by their own names.
  folder::ReplacePlanned plan(const folder::Replacing& by, text::SearchControl& control, folder::WalkReport* report) const;
};
