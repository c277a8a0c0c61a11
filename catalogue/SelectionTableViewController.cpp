#include "catalogue/SelectionTableViewController.h"

#include "catalogue/ScrollerViewController.h"
#include "platform/foundation/Conversions.h"
#include "platform/views/NavigationController.h"
#include "platform/views/Platform.h"

namespace quillomat {

namespace {

constexpr auto cellIdentifier = "SelectionTableViewCell";

} // namespace

SelectionTableViewController::SelectionTableViewController(Platform& platform, Storyboard& storyboard)
    : ViewController(platform, storyboard), document_(platform) {}

std::shared_ptr<SelectionTableViewController> SelectionTableViewController::self() {
    return std::static_pointer_cast<SelectionTableViewController>(shared_from_this());
}

std::function<void()> SelectionTableViewController::unlessGone(void (SelectionTableViewController::*task)()) {
    return [weak = std::weak_ptr<SelectionTableViewController>(self()), task] {
        if (const auto list = weak.lock()) {
            (*list.*task)();
        }
    };
}

std::shared_ptr<View> SelectionTableViewController::loadView() {
    return std::make_shared<TableView>(Rect{{0, 0}, platform().screen.size});
}

std::shared_ptr<TableView> SelectionTableViewController::tableView() {
    return std::static_pointer_cast<TableView>(view());
}

void SelectionTableViewController::viewDidLoad() {
    ViewController::viewDidLoad();
    showAddButton();
    tableItems_ = JSONFromFile()["tableItems"];
    title = "Selection";
    tableView()->registerCell(cellIdentifier, [width = view()->bounds().size.width] {
        return std::static_pointer_cast<View>(SelectionTableViewCell::make(width));
    });
    checkVersion();
}

void SelectionTableViewController::showAddButton() {
    navigationItem.leftBarButtonItem =
        BarButtonItem{.title = "Options",
                      .style = BarButtonStyle::done,
                      .bold = true,
                      .fontSize = 12,
                      .action = unlessGone(&SelectionTableViewController::buttonTrigger)};
}

std::string SelectionTableViewController::mainDirectory() const {
    return document_.mainDirectory() + "/";
}

Value SelectionTableViewController::JSONFromFile() const {
    return document_.JSONFromFile();
}

std::size_t SelectionTableViewController::numberOfSectionsInTableView() const {
    return 1;
}

std::size_t SelectionTableViewController::tableViewNumberOfRowsInSection(std::size_t /*section*/) const {
    return tableItems_.elements().size();
}

double SelectionTableViewController::tableViewHeightForHeaderInSection(std::size_t /*section*/) const {
    return 0.0;
}

double SelectionTableViewController::tableViewHeightForRowAtIndexPath(IndexPath /*indexPath*/) const {
    return SelectionTableViewCell::height;
}

std::shared_ptr<SelectionTableViewCell>
SelectionTableViewController::tableViewCellForRowAtIndexPath(IndexPath indexPath) {
    const auto cell =
        std::static_pointer_cast<SelectionTableViewCell>(tableView()->dequeueReusableCell(cellIdentifier));
    const Value row = tableItems_.at(indexPath.row);
    cell->sizeLabel()->text = describe(row["sizeLabel"]);
    cell->typeLabel()->text = describe(row["typeLabel"]);
    cell->descLabel()->text = describe(row["descLabel"]);
    cell->previewImage()->setImage(document_.imageNamed(describe(row["previewImage"])));
    if (!cell->previewImage()->image()) {
        // Assets are looked up by the value's text, files by a string alone.
        cell->previewImage()->setImage(document_.imageFromDocument(row["previewImage"].stringValue()));
    }
    return cell;
}

void SelectionTableViewController::tableViewDidSelectRowAtIndexPath(IndexPath indexPath) {
    const auto gallery =
        std::dynamic_pointer_cast<ScrollerViewController>(storyboard().instantiate("scrollerViewController"));
    if (!gallery || navigationController() == nullptr) {
        return;
    }
    gallery->setContentInfo(describe(tableItems_.at(indexPath.row)["typeLabel"]));
    navigationController()->push(gallery);
}

} // namespace quillomat
