#pragma once

// ZFileChooser: a modal dialog that chooses a file to open or a path to save to. It
// shows the current folder's path, its folders (first, with "..", to go up) and the
// files whose extension is one of a list, a name field, Open or Save with Cancel, and
// buttons for the parent and the home folder. A double click or Enter enters a folder
// or chooses a file; a folder path typed into the name field is entered as well. In
// save mode a name without an extension gets the first one of the list, and replacing
// a file that exists is asked first. A folder that cannot be read is reported and the
// folder shown before stays.

#include "ui/controls/label.h"
#include "ui/controls/list_view.h"
#include "ui/dialog.h"

#include <functional>
#include <string>
#include <vector>

namespace halvern {

struct ZFileChooserOptions {
    bool save = false;                   // choose a path to write (a new name may be typed)
    std::string title;                   // empty: "Open file" or "Save file"
    std::string folder;                  // where it starts; empty: the home folder
    std::string name;                    // the name suggested in save mode
    std::vector<std::string> extensions; // without the dot, any case; empty: every file
};

class ZFileChooser : public ZDialog {
public:
    ZFileChooser(ZFileChooserOptions options, std::function<void(std::string path)> chosen);

    const std::string& folder() const { return folder_; }
    // Shows a folder; false, with a message, when it cannot be read (the folder shown
    // before stays).
    bool EnterFolder(const std::string& folder);
    ZListView& list() const { return *list_; }
    ZDialogField& nameField() const { return *name_; }
    // The row of an entry shown by its name (a folder's name without its "/"), or -1.
    int RowOf(const std::string& name) const;

    ZView* InitialFocus() override { return name_; }
    // Up and Down move through the list; Enter does what the Open or Save button does.
    bool OnKey(const ZKeyEvent& event) override;

protected:
    void LayoutBody(const ZRect& body) override;
    // Frames the list, whose face is the panel's.
    void PaintOver(ZCanvas& canvas) override;

private:
    struct Entry {
        std::string name;
        bool folder = false;
    };

    // Reads a folder's entries (folders first, then matching files, each sorted without
    // regard to case; hidden ones left out); false with the reason when it fails.
    bool read(const std::string& folder, std::vector<Entry>& entries, std::string& error) const;
    bool matches(const std::string& fileName) const;
    void show(std::string folder, std::vector<Entry> entries);
    void showPath();
    void selectRow(int row);
    void activateRow(int row);
    // Open or Save: the selected folder, else the typed name.
    void accept();
    void choose(const std::string& path);

    ZFileChooserOptions options_;
    std::function<void(std::string)> chosen_;
    std::string folder_;
    std::vector<Entry> entries_;
    bool folderPicked_ = false; // a folder row was selected after the last typing
    ZLabel* path_;
    ZButton* up_;
    ZButton* home_;
    ZListView* list_;
    ZLabel* nameLabel_;
    ZDialogField* name_;
    ZLabel* filter_;
};

ZFileChooser* ShowFileChooser(ZUIRoot& root, ZFileChooserOptions options, std::function<void(std::string path)> chosen);

} // namespace halvern
