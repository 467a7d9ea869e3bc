#include "editor/preset_window.h"

#include "core/z_exception.h"
#include "ui/file_chooser.h"

#include <algorithm>
#include <exception>
#include <filesystem>

namespace halvern {

namespace {

constexpr double kCommandWidth = 168.0;
constexpr double kArrowWidth = 32.0;
constexpr double kCurrentWidth = 320.0;
constexpr std::string_view kFactoryKey = "F";
constexpr std::string_view kUserKey = "U";
constexpr std::string_view kUnnamed = "(no name)";
constexpr std::string_view kChanged = "The presets were changed meanwhile. Please try again.";
const std::vector<std::string> kPresetFiles{"xml"};

bool isFolder(const ZMLElement& element) { return element.name() == ZPresetCollection::kFolderElement; }
bool isPreset(const ZMLElement& element) { return element.name() == kPresetElement; }

std::string nameOf(const ZMLElement& element)
{
    const std::string name = element.getAttribute(isFolder(element) ? ZPresetCollection::kFolderName : kPresetName);
    return name.empty() ? std::string(kUnnamed) : name;
}

// The element a node stands for in a collection as it is now; throws when it is no
// longer the one the node showed.
template <class Element>
Element& elementAt(Element& root, const ZPresetNode& node)
{
    Element* element = &root;
    for (const int index : node.path) {
        if (index < 0 || index >= static_cast<int>(element->children().size()))
            throw ZException(std::string(kChanged));
        element = element->children()[static_cast<size_t>(index)].get();
    }
    if (!node.path.empty() && nameOf(*element) != node.name)
        throw ZException(std::string(kChanged));
    return *element;
}

std::string trimmed(const std::string& text)
{
    const size_t first = text.find_first_not_of(" \t");
    return first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string inQuotes(const std::string& name) { return "\u201C" + name + "\u201D"; }

std::string counted(int count, const std::string& what)
{
    return std::to_string(count) + (count == 1 ? " preset " : " presets ") + what + ".";
}

} // namespace

const std::vector<ZPresetWindow::Command>& ZPresetWindow::commands()
{
    static const std::vector<Command> list{
        {"Load", "<name>Load</name> <p>Loads the selected preset (a double click does the same).</p>",
         &ZPresetWindow::load, &ZPresetWindow::presetSelected, false},
        {"Replace", "<name>Replace</name> <p>Stores the current settings into the selected preset.</p>",
         &ZPresetWindow::replace, &ZPresetWindow::userPresetSelected, false},
        {"Save new", "<name>Save new</name> <p>Saves the current settings as a new preset in the selected folder.</p>",
         &ZPresetWindow::saveNew, &ZPresetWindow::always, false},
        {"New folder", "<name>New folder</name> <p>Makes a folder in the selected folder.</p>",
         &ZPresetWindow::newFolder, &ZPresetWindow::always, true},
        {"Rename", "<name>Rename</name> <p>Renames the selected preset or folder.</p>", &ZPresetWindow::rename,
         &ZPresetWindow::userItemSelected, false},
        {"Delete", "<name>Delete</name> <p>Deletes the selected preset, or the selected folder with all it holds.</p>",
         &ZPresetWindow::remove, &ZPresetWindow::userItemSelected, false},
        {"Export", "<name>Export</name> <p>Writes the selected preset to a file of its own.</p>",
         &ZPresetWindow::exportPreset, &ZPresetWindow::presetSelected, true},
        {"Import", "<name>Import</name> <p>Adds the preset of a file to the selected folder.</p>",
         &ZPresetWindow::importPreset, &ZPresetWindow::always, false},
        {"Compress all", "<name>Compress all</name> <p>Stores every preset of yours in the packed form.</p>",
         &ZPresetWindow::compressAll, &ZPresetWindow::always, true},
        {"Mark for exchange",
         "<name>Mark for exchange</name> <p>Marks your presets that are not marked yet for the preset exchange.</p>",
         &ZPresetWindow::markForExchange, &ZPresetWindow::always, false},
    };
    return list;
}

ZPresetWindow::ZPresetWindow(std::unique_ptr<ZPresetSource> source, std::string title)
    : ZDialog(std::move(title), kSize), source_(std::move(source)),
      expanded_{std::string(kFactoryKey), std::string(kUserKey)}
{
    previous_ = AddChild(std::make_unique<ZButton>("\u25C0", [this] { step(-1); }));
    previous_->SetName("presetprevious");
    previous_->SetHelpText("<name>Previous preset</name> <p>Loads the preset before the current one.</p>");
    current_ = AddChild(std::make_unique<ZLabel>("", ZLabelStyle::Title, ZTextAlign::Center));
    current_->SetName("CurrentPreset");
    next_ = AddChild(std::make_unique<ZButton>("\u25B6", [this] { step(1); }));
    next_->SetName("presetnext");
    next_->SetHelpText("<name>Next preset</name> <p>Loads the preset after the current one.</p>");
    tree_ = AddChild(std::make_unique<ZPresetTree>());
    tree_->SetName("Presets");
    tree_->SetOnSelect([this](int) { updateControls(); });
    tree_->SetOnToggle([this](int row) { toggle(row); });
    tree_->SetOnActivate([this](int row) { activate(row); });
    for (const Command& command : commands()) {
        ZButton* button = AddChild(std::make_unique<ZButton>(command.label, [this, run = command.run] {
            this->run([this, run] { (this->*run)(); });
        }));
        button->SetName(command.label);
        button->SetHelpText(command.help);
        buttons_.push_back(button);
    }
    status_ = AddChild(std::make_unique<ZLabel>("", ZLabelStyle::Label));
    status_->SetName("Status");
    AddButton("Close", [this] { Close(); });
    if (const ZMLElement* current = source_->current())
        if (!reveal(source_->factory().root(), std::string(kFactoryKey), current))
            reveal(source_->user().root(), std::string(kUserKey), current);
    rebuild();
}

// ---- the tree ----

void ZPresetWindow::rebuild()
{
    const ZMLElement* current = source_->current();
    std::vector<ZPresetNode> nodes;
    for (const bool factory : {true, false}) {
        const ZPresetCollection& collection = factory ? source_->factory() : source_->user();
        if (factory && collection.root().children().empty())
            continue; // kinds without factory presets show only the user's
        ZPresetNode branch;
        branch.kind = ZPresetNode::Kind::Branch;
        branch.factory = factory;
        branch.name = factory ? "Factory" : "User";
        branch.key = factory ? kFactoryKey : kUserKey;
        branch.expanded = expanded_.contains(branch.key);
        nodes.push_back(branch);
        if (branch.expanded)
            addNodes(nodes, collection.root(), branch, current);
    }
    const bool firstTime = shownRoot_ == nullptr;
    tree_->SetNodes(std::move(nodes));
    shownRoot_ = &source_->user().root();
    shownCurrent_ = source_->currentIndex();
    if (firstTime)
        for (size_t row = 0; row < tree_->nodes().size(); ++row)
            if (tree_->nodes()[row].current)
                tree_->Select(static_cast<int>(row));
    current_->SetText(current != nullptr ? nameOf(*current) : "No preset loaded");
    updateControls();
}

void ZPresetWindow::addNodes(std::vector<ZPresetNode>& nodes, const ZMLElement& folder, const ZPresetNode& parent,
                             const ZMLElement* current) const
{
    const auto& children = folder.children();
    for (size_t index = 0; index < children.size(); ++index) {
        const ZMLElement& child = *children[index];
        if (!isFolder(child) && !isPreset(child))
            continue;
        ZPresetNode node;
        node.kind = isFolder(child) ? ZPresetNode::Kind::Folder : ZPresetNode::Kind::Preset;
        node.factory = parent.factory;
        node.depth = parent.depth + 1;
        node.path = parent.path;
        node.path.push_back(static_cast<int>(index));
        node.name = nameOf(child);
        node.key = parent.key + "/" + node.name;
        node.expanded = node.isContainer() && expanded_.contains(node.key);
        node.current = &child == current;
        nodes.push_back(node);
        if (node.expanded)
            addNodes(nodes, child, node, current);
    }
}

bool ZPresetWindow::reveal(const ZMLElement& folder, const std::string& key, const ZMLElement* target)
{
    for (const auto& child : folder.children()) {
        if (child.get() == target)
            return true;
        if (isFolder(*child) && reveal(*child, key + "/" + nameOf(*child), target)) {
            expanded_.insert(key + "/" + nameOf(*child));
            return true;
        }
    }
    return false;
}

void ZPresetWindow::toggle(int row)
{
    const ZPresetNode& node = tree_->nodes()[static_cast<size_t>(row)];
    if (!expanded_.erase(node.key))
        expanded_.insert(node.key);
    rebuild();
}

void ZPresetWindow::activate(int row)
{
    tree_->Select(row);
    tree_->nodes()[static_cast<size_t>(row)].isContainer() ? toggle(row) : run([this] { load(); });
}

void ZPresetWindow::updateControls()
{
    for (size_t i = 0; i < buttons_.size(); ++i)
        buttons_[i]->SetEnabled((this->*commands()[i].enabled)());
    const bool any = !source_->sequence().empty();
    previous_->SetEnabled(any);
    next_->SetEnabled(any);
}

void ZPresetWindow::Refresh()
{
    if (&source_->user().root() != shownRoot_ || source_->currentIndex() != shownCurrent_)
        rebuild();
}

bool ZPresetWindow::OnKey(const ZKeyEvent& event)
{
    const int row = tree_->selected();
    const ZPresetNode* node = selected();
    switch (event.key) {
    case ZKey::Up:
    case ZKey::Down: {
        const int last = static_cast<int>(tree_->nodes().size()) - 1;
        tree_->Select(std::clamp(row + (event.key == ZKey::Up ? -1 : 1), 0, last));
        updateControls();
        return true;
    }
    case ZKey::Left:
    case ZKey::Right:
        if (node != nullptr && node->isContainer() && node->expanded == (event.key == ZKey::Left))
            toggle(row);
        return true;
    case ZKey::Enter:
        if (node != nullptr)
            activate(row);
        return true;
    case ZKey::Delete:
        if (userItemSelected())
            run([this] { remove(); });
        return true;
    default:
        return ZDialog::OnKey(event);
    }
}

// ---- what the commands act on ----

bool ZPresetWindow::presetSelected() const
{
    return selected() != nullptr && selected()->kind == ZPresetNode::Kind::Preset;
}

bool ZPresetWindow::userPresetSelected() const { return presetSelected() && !selected()->factory; }

bool ZPresetWindow::userItemSelected() const
{
    return selected() != nullptr && !selected()->factory && selected()->kind != ZPresetNode::Kind::Branch;
}

std::vector<int> ZPresetWindow::targetFolder(std::string& key) const
{
    key = kUserKey;
    const ZPresetNode* node = selected();
    if (node == nullptr || node->factory)
        return {};
    if (node->isContainer()) {
        key = node->key;
        return node->path;
    }
    key = node->key.substr(0, node->key.rfind('/'));
    return {node->path.begin(), node->path.end() - 1};
}

// ---- commands ----

void ZPresetWindow::run(const std::function<void()>& command)
{
    try {
        command();
    } catch (const std::exception& error) {
        ShowMessage(*root(), Text(), error.what());
    }
    rebuild();
}

void ZPresetWindow::save(const ZPresetCollection::Change& change)
{
    const std::string notice = source_->Save(change);
    rebuild();
    if (!notice.empty())
        ShowMessage(*root(), Text(), notice);
}

void ZPresetWindow::askName(const std::string& title, const std::string& prompt, const std::string& suggested,
                            std::function<void(const std::string&)> named)
{
    ShowPrompt(*root(), title, prompt, suggested, [this, named = std::move(named)](const std::string& text) {
        const std::string name = trimmed(text);
        run([&] {
            if (name.empty())
                throw ZException("A name must not be empty.");
            named(name);
        });
    });
}

void ZPresetWindow::load()
{
    const ZPresetNode node = *selected();
    const ZPresetCollection& collection = node.factory ? source_->factory() : source_->user();
    source_->Load(elementAt(collection.root(), node));
    setStatus("Loaded " + inQuotes(node.name) + ".");
    if (loaded_)
        loaded_();
}

void ZPresetWindow::step(int direction)
{
    if (source_->StepShowingErrors(*root(), direction) && loaded_)
        loaded_();
    rebuild();
}

// What a preset held is gone once replaced: the user is asked first.
void ZPresetWindow::replace()
{
    const ZPresetNode node = *selected();
    const std::string question = "Replace what the preset " + inQuotes(node.name) + " holds by the current settings?";
    ShowQuestion(*root(), Text(), question, {"Replace", "Cancel"}, [this, node](int button) {
        if (button != 0)
            return;
        run([&] {
            save([&](ZPresetCollection& collection) { source_->Replace(elementAt(collection.root(), node)); });
            setStatus(inQuotes(node.name) + " now holds the current settings.");
        });
    });
}

void ZPresetWindow::saveNew()
{
    std::string key;
    const std::vector<int> folder = targetFolder(key);
    const std::string suggested = source_->CurrentName();
    askName("Save preset", "Enter name of the new preset", suggested.empty() ? "New preset" : suggested,
            [this, folder, key](const std::string& name) {
                ZPresetNode target;
                target.path = folder;
                target.name = folder.empty() ? std::string() : key.substr(key.rfind('/') + 1);
                save([&](ZPresetCollection& collection) { source_->Add(elementAt(collection.root(), target), name); });
                expanded_.insert(key);
                rebuild();
                tree_->Select(tree_->RowOf(key + "/" + name, ZPresetNode::Kind::Preset));
                setStatus("Saved " + inQuotes(name) + ".");
            });
}

void ZPresetWindow::newFolder()
{
    std::string key;
    const std::vector<int> folder = targetFolder(key);
    ZPresetNode target;
    target.path = folder;
    target.name = folder.empty() ? std::string() : key.substr(key.rfind('/') + 1);
    const std::string suggested = ZPresetCollection::SuggestFolderName(elementAt(source_->user().root(), target));
    askName("New folder", std::string(ZPresetCollection::kNewFolderPrompt), suggested,
            [this, target, key](const std::string& name) {
                save([&](ZPresetCollection& collection) {
                    ZPresetCollection::CreateFolder(elementAt(collection.root(), target), name);
                });
                expanded_.insert(key);
                rebuild();
                tree_->Select(tree_->RowOf(key + "/" + name, ZPresetNode::Kind::Folder));
                setStatus("Made the folder " + inQuotes(name) + ".");
            });
}

void ZPresetWindow::rename()
{
    const ZPresetNode node = *selected();
    const bool folder = node.kind == ZPresetNode::Kind::Folder;
    askName(folder ? "Rename folder" : "Rename preset",
            folder ? std::string(ZPresetCollection::kRenameFolderPrompt) : "Enter new name of the preset", node.name,
            [this, node, folder](const std::string& name) {
                save([&](ZPresetCollection& collection) {
                    ZMLElement& element = elementAt(collection.root(), node);
                    folder ? ZPresetCollection::RenameFolder(element, name) : ZPresetCollection::RenamePreset(element, name);
                });
                const std::string key = node.key.substr(0, node.key.rfind('/') + 1) + name;
                if (expanded_.erase(node.key))
                    expanded_.insert(key);
                rebuild();
                tree_->Select(tree_->RowOf(key, node.kind));
                setStatus("Renamed " + inQuotes(node.name) + " to " + inQuotes(name) + ".");
            });
}

void ZPresetWindow::remove()
{
    const ZPresetNode node = *selected();
    const bool folder = node.kind == ZPresetNode::Kind::Folder;
    const std::string question = folder ? "Delete the folder " + inQuotes(node.name) + " with everything in it?"
                                        : "Delete the preset " + inQuotes(node.name) + "?";
    ShowQuestion(*root(), Text(), question, {"Delete", "Cancel"}, [this, node](int button) {
        if (button != 0)
            return;
        run([&] {
            save([&](ZPresetCollection& collection) { collection.Remove(elementAt(collection.root(), node)); });
            setStatus("Deleted " + inQuotes(node.name) + ".");
        });
    });
}

void ZPresetWindow::exportPreset()
{
    const ZPresetNode node = *selected();
    ZFileChooserOptions options;
    options.save = true;
    options.title = "Export preset";
    options.folder = exchangeFolder_;
    options.name = node.name;
    options.extensions = kPresetFiles;
    ShowFileChooser(*root(), options, [this, node](const std::string& path) {
        run([&] {
            const ZPresetCollection& collection = node.factory ? source_->factory() : source_->user();
            ZPresetCollection::ExportPreset(elementAt(collection.root(), node), path);
            exchangeFolder_ = std::filesystem::path(path).parent_path().string();
            setStatus("Exported " + inQuotes(node.name) + " to " + path + ".");
        });
    });
}

void ZPresetWindow::importPreset()
{
    std::string key;
    ZPresetNode target;
    target.path = targetFolder(key);
    target.name = target.path.empty() ? std::string() : key.substr(key.rfind('/') + 1);
    ZFileChooserOptions options;
    options.title = "Import preset";
    options.folder = exchangeFolder_;
    options.extensions = kPresetFiles;
    ShowFileChooser(*root(), options, [this, target, key](const std::string& path) {
        run([&] {
            std::string name;
            save([&](ZPresetCollection& collection) {
                name = nameOf(ZPresetCollection::ImportPreset(elementAt(collection.root(), target), path));
            });
            exchangeFolder_ = std::filesystem::path(path).parent_path().string();
            expanded_.insert(key);
            rebuild();
            tree_->Select(tree_->RowOf(key + "/" + name, ZPresetNode::Kind::Preset));
            setStatus("Imported " + inQuotes(name) + ".");
        });
    });
}

void ZPresetWindow::compressAll()
{
    int count = 0;
    save([&count](ZPresetCollection& collection) { count = collection.CompressAll(); });
    setStatus(counted(count, "compressed"));
}

void ZPresetWindow::markForExchange()
{
    int count = 0;
    save([&count](ZPresetCollection& collection) { count = collection.MarkForExchange(1, true); });
    setStatus(counted(count, "marked for exchange"));
}

// ---- layout ----

void ZPresetWindow::LayoutBody(const ZRect& body)
{
    const ZTheme& theme = root()->theme();
    const double row = theme.rowHeight;
    previous_->SetBounds({body.x, body.y, kArrowWidth, row});
    current_->SetBounds({body.x + kArrowWidth + theme.spacing, body.y, kCurrentWidth, row});
    next_->SetBounds({current_->bounds().right() + theme.spacing, body.y, kArrowWidth, row});
    const double top = body.y + row + theme.spacing;
    const double commandsX = body.right() - kCommandWidth;
    tree_->SetBounds({body.x, top, commandsX - theme.spacing - body.x, body.bottom() - top});
    double y = top;
    for (size_t i = 0; i < buttons_.size(); ++i) {
        if (commands()[i].groupStart)
            y += theme.spacing * 2;
        buttons_[i]->SetBounds({commandsX, y, kCommandWidth, row});
        y += row + theme.spacing / 2;
    }
    status_->SetBounds(ButtonRowRemainder());
    tree_->Select(tree_->selected()); // into view, now that the tree has its size
}

} // namespace halvern
