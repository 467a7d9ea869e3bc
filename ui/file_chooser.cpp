#include "ui/file_chooser.h"

#include "core/z_format.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace halvern {

namespace fs = std::filesystem;

namespace {

constexpr ZPoint kPanelSize{640.0, 460.0};
constexpr double kFolderButtonWidth = 64.0;
constexpr double kNameLabelWidth = 48.0;
constexpr std::string_view kParentRow = "..";

std::string lowered(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

std::string homeFolder()
{
    const char* home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? home : "/";
}

std::string normalFolder(const fs::path& path)
{
    std::error_code error;
    fs::path normal = fs::absolute(path, error).lexically_normal();
    std::string text = normal.string();
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text;
}

// A list row that a double click activates.
class ZChooserList : public ZListView {
public:
    explicit ZChooserList(std::function<void(int)> onActivate) : onActivate_(std::move(onActivate)) {}
    bool OnMouseDown(const ZMouseEvent& event) override
    {
        ZListView::OnMouseDown(event);
        const int row = RowAt(event.position);
        if (event.button == ZMouseButton::Left && event.clickCount == 2 && row >= 0)
            onActivate_(row);
        return false;
    }

private:
    std::function<void(int)> onActivate_;
};

// The end of a path that fits a width, with "…" for what is left out.
std::string pathTail(const ZCanvas& canvas, const std::string& path, const ZTextStyle& style, double width)
{
    if (canvas.TextWidth(path, style) <= width)
        return path;
    for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        const std::string tail = "\u2026" + path.substr(slash);
        if (canvas.TextWidth(tail, style) <= width)
            return tail;
    }
    return canvas.Elide(path.substr(path.rfind('/')), width, style);
}

} // namespace

ZFileChooser::ZFileChooser(ZFileChooserOptions options, std::function<void(std::string path)> chosen)
    : ZDialog(options.title.empty() ? (options.save ? "Save file" : "Open file") : options.title, kPanelSize),
      options_(std::move(options)), chosen_(std::move(chosen))
{
    for (std::string& extension : options_.extensions)
        extension = lowered(extension);
    path_ = AddChild(std::make_unique<ZLabel>("", ZLabelStyle::Value));
    path_->SetName("Folder");
    up_ = AddChild(std::make_unique<ZButton>("Up", [this] { EnterFolder(fs::path(folder_).parent_path().string()); }));
    up_->SetName("Up");
    home_ = AddChild(std::make_unique<ZButton>("Home", [this] { EnterFolder(homeFolder()); }));
    home_->SetName("Home");
    list_ = AddChild(std::make_unique<ZChooserList>([this](int row) { activateRow(row); }));
    list_->SetName("Files");
    list_->SetOnSelect([this](int row) { selectRow(row); });
    nameLabel_ = AddChild(std::make_unique<ZLabel>("Name", ZLabelStyle::Label));
    name_ = AddChild(std::make_unique<ZDialogField>(options_.save ? options_.name : std::string()));
    name_->SetName("Name");
    name_->SelectAll();
    name_->SetOnEdited([this] { folderPicked_ = false; });
    std::string filter;
    for (const std::string& extension : options_.extensions)
        filter += (filter.empty() ? "Files: ." : ", .") + extension;
    filter_ = AddChild(std::make_unique<ZLabel>(filter, ZLabelStyle::Label));
    AddButton(options_.save ? "Save" : "Open", [this] { accept(); });
    AddButton("Cancel", [this] { Close(); });

    // The first of the start folder, the home folder and the top folder that reads.
    for (const std::string& start : {options_.folder.empty() ? homeFolder() : options_.folder, homeFolder(), std::string("/")}) {
        std::vector<Entry> entries;
        std::string error;
        if (read(normalFolder(start), entries, error)) {
            show(normalFolder(start), std::move(entries));
            break;
        }
    }
}

bool ZFileChooser::matches(const std::string& fileName) const
{
    if (options_.extensions.empty())
        return true;
    const std::string extension = lowered(fs::path(fileName).extension().string());
    return !extension.empty() &&
           std::find(options_.extensions.begin(), options_.extensions.end(), extension.substr(1)) !=
               options_.extensions.end();
}

bool ZFileChooser::read(const std::string& folder, std::vector<Entry>& entries, std::string& error) const
{
    std::error_code code;
    fs::directory_iterator it(folder, code);
    for (; !code && it != fs::directory_iterator(); it.increment(code)) {
        const std::string name = it->path().filename().string();
        if (name.empty() || name.front() == '.')
            continue;
        std::error_code kind;
        const bool isFolder = it->is_directory(kind);
        if (isFolder || (it->is_regular_file(kind) && matches(name)))
            entries.push_back({name, isFolder});
    }
    if (code) {
        error = code.message();
        return false;
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return a.folder != b.folder ? a.folder : lowered(a.name) < lowered(b.name);
    });
    if (folder != "/")
        entries.insert(entries.begin(), Entry{std::string(kParentRow), true});
    return true;
}

bool ZFileChooser::EnterFolder(const std::string& folder)
{
    const std::string normal = normalFolder(folder);
    std::vector<Entry> entries;
    std::string error;
    if (!read(normal, entries, error)) {
        if (ZUIRoot* r = root())
            ShowMessage(*r, "Folder not readable", "The folder \"" + normal + "\" cannot be opened: " + error + ".");
        return false;
    }
    const std::string previous = folder_;
    show(normal, std::move(entries));
    // Going up marks the folder that was left.
    if (fs::path(previous).parent_path() == fs::path(folder_))
        list_->SetSelectedRow(RowOf(fs::path(previous).filename().string()));
    return true;
}

void ZFileChooser::show(std::string folder, std::vector<Entry> entries)
{
    folder_ = std::move(folder);
    entries_ = std::move(entries);
    std::vector<std::string> rows;
    for (const Entry& entry : entries_)
        rows.push_back(entry.folder && entry.name != kParentRow ? entry.name + "/" : entry.name);
    list_->SetRows(std::move(rows));
    folderPicked_ = false;
    up_->SetEnabled(folder_ != "/");
    showPath();
}

void ZFileChooser::showPath()
{
    if (ZUIRoot* r = root())
        path_->SetText(pathTail(r->canvas(), folder_, r->theme().Value(), path_->bounds().width));
    else
        path_->SetText(folder_);
}

int ZFileChooser::RowOf(const std::string& name) const
{
    for (size_t row = 0; row < entries_.size(); ++row)
        if (entries_[row].name == name)
            return static_cast<int>(row);
    return -1;
}

void ZFileChooser::selectRow(int row)
{
    if (row < 0 || row >= static_cast<int>(entries_.size()))
        return;
    list_->SetSelectedRow(row);
    if (ZUIRoot* r = root())
        r->SetFocus(name_); // typing goes on into the name
    const Entry& entry = entries_[static_cast<size_t>(row)];
    folderPicked_ = entry.folder;
    if (!entry.folder) {
        name_->SetText(entry.name);
        name_->SelectAll();
    }
}

void ZFileChooser::activateRow(int row)
{
    if (row < 0 || row >= static_cast<int>(entries_.size()))
        return;
    const Entry& entry = entries_[static_cast<size_t>(row)];
    if (entry.folder)
        EnterFolder((fs::path(folder_) / entry.name).string());
    else
        choose((fs::path(folder_) / entry.name).string());
}

void ZFileChooser::accept()
{
    if (folderPicked_ && list_->selectedRow() >= 0)
        return activateRow(list_->selectedRow());
    const std::string typed = name_->Text();
    if (typed.find_first_not_of(' ') == std::string::npos)
        return;
    const fs::path path = fs::path(folder_) / typed; // an absolute path typed stays as it is
    std::error_code error;
    if (fs::is_directory(path, error)) {
        if (EnterFolder(path.string()))
            name_->SetText(options_.save ? options_.name : std::string());
        return;
    }
    choose(path.string());
}

void ZFileChooser::choose(const std::string& path)
{
    ZUIRoot& r = *root();
    fs::path target(path);
    std::error_code error;
    if (!options_.save) {
        if (!fs::is_regular_file(target, error))
            ShowMessage(r, "File not found", "The file \"" + target.string() + "\" does not exist.");
        else
            Finish([&] { chosen_(target.string()); });
        return;
    }
    if (target.extension().empty() && !options_.extensions.empty())
        target.replace_extension(options_.extensions.front());
    if (!fs::is_directory(target.parent_path(), error)) {
        ShowMessage(r, "Folder not found", "The folder \"" + target.parent_path().string() + "\" does not exist.");
        return;
    }
    if (!fs::exists(target, error)) {
        Finish([&] { chosen_(target.string()); });
        return;
    }
    ShowQuestion(r, "Replace file",
                 ZFormat("\"{0}\" already exists in \"{1}\".\nDo you want to replace it?")
                     .arg(target.filename().string())
                     .arg(target.parent_path().string())
                     .text(),
                 {"Replace", "Cancel"}, [this, target](int button) {
                     if (button == 0)
                         Finish([&] { chosen_(target.string()); });
                 });
}

bool ZFileChooser::OnKey(const ZKeyEvent& event)
{
    if (event.key == ZKey::Up || event.key == ZKey::Down) {
        const int count = static_cast<int>(entries_.size());
        const int step = event.key == ZKey::Up ? -1 : 1;
        const int current = list_->selectedRow();
        selectRow(current < 0 ? (step > 0 ? 0 : count - 1) : std::clamp(current + step, 0, count - 1));
        return true;
    }
    return ZDialog::OnKey(event);
}

void ZFileChooser::LayoutBody(const ZRect& body)
{
    const ZTheme& theme = root()->theme();
    const double row = theme.rowHeight;
    const double buttonsX = body.right() - 2 * kFolderButtonWidth - theme.spacing;
    path_->SetBounds({body.x, body.y, buttonsX - theme.spacing - body.x, row});
    up_->SetBounds({buttonsX, body.y, kFolderButtonWidth, row});
    home_->SetBounds({buttonsX + kFolderButtonWidth + theme.spacing, body.y, kFolderButtonWidth, row});
    const double nameY = body.bottom() - row;
    const double listY = body.y + row + theme.spacing;
    list_->SetBounds({body.x, listY, body.width, nameY - theme.spacing - listY});
    nameLabel_->SetBounds({body.x, nameY, kNameLabelWidth, row});
    name_->SetBounds({body.x + kNameLabelWidth, nameY, body.width - kNameLabelWidth, row});
    filter_->SetBounds(ButtonRowRemainder());
    showPath();
}

void ZFileChooser::PaintOver(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    canvas.StrokeRoundedRect(list_->bounds().inset(-theme.lineWidth, -theme.lineWidth), theme.radius, theme.panelBorder,
                             theme.lineWidth);
}

ZFileChooser* ShowFileChooser(ZUIRoot& root, ZFileChooserOptions options, std::function<void(std::string path)> chosen)
{
    return ZDialog::Show(root, std::make_unique<ZFileChooser>(std::move(options), std::move(chosen)));
}

} // namespace halvern
