#include "catalogue/SelectionTableViewCell.h"

#include <algorithm>

namespace quillomat {

namespace {

constexpr double margin = 16;
constexpr double previewSide = 95;
constexpr double gap = 12;
constexpr double sizeWidth = 72;

std::shared_ptr<Label> addLabel(View& cell, const Rect& frame, const Font& font) {
    const auto label = std::make_shared<Label>();
    label->setFrame(frame);
    label->font = font;
    cell.addSubview(label);
    return label;
}

} // namespace

std::shared_ptr<SelectionTableViewCell> SelectionTableViewCell::make(double width) {
    const auto cell = std::make_shared<SelectionTableViewCell>(makeRect(0, 0, width, height));
    cell->layOut();
    cell->awakeFromNib();
    return cell;
}

void SelectionTableViewCell::layOut() {
    const double textLeft = margin + previewSide + gap;
    const double sizeLeft = bounds().size.width - margin - sizeWidth;
    const double titleWidth = std::max(0.0, sizeLeft - gap - textLeft);
    const double textWidth = std::max(0.0, bounds().size.width - margin - textLeft);

    const auto picture = std::make_shared<ImageView>();
    picture->setFrame(makeRect(margin, (height - previewSide) / 2, previewSide, previewSide));
    picture->contentMode = ContentMode::scaleAspectFit;
    addSubview(picture);
    previewImage_ = picture;

    typeLabel_ = addLabel(*this, makeRect(textLeft, 24, titleWidth, 24), {17, /*bold=*/true});
    sizeLabel_ = addLabel(*this, makeRect(sizeLeft, 28, sizeWidth, 16), {11, /*bold=*/false});
    descLabel_ = addLabel(*this, makeRect(textLeft, 52, textWidth, 36), {13, /*bold=*/false});
}

} // namespace quillomat
