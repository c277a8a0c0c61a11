// A table that asks its data source for cells and tells the host when to ask again.
#pragma once

#include "platform/views/View.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace quillomat {

struct IndexPath {
    std::size_t section = 0;
    std::size_t row = 0;
    friend bool operator==(const IndexPath&, const IndexPath&) = default;
};

class TableView final : public View {
public:
    using CellFactory = std::function<std::shared_ptr<View>()>;

    explicit TableView(const Rect& frame) : View(frame) {}
    [[nodiscard]] std::string className() const override { return "UITableView"; }

    /// What makes the cells of an identifier; registering again replaces.
    void registerCell(std::string identifier, CellFactory factory) {
        factories_[std::move(identifier)] = std::move(factory);
    }
    /// A cell of that identifier; null when none is registered. Hosts keep their own pools, so every cell is new here.
    [[nodiscard]] std::shared_ptr<View> dequeueReusableCell(const std::string& identifier) const {
        const auto found = factories_.find(identifier);
        return found == factories_.end() ? nullptr : found->second();
    }

    void reloadData() const {
        if (dataReloaded) {
            dataReloaded();
        }
    }
    /// Called when every row has to be asked for again, for a host to mirror.
    std::function<void()> dataReloaded;

private:
    std::map<std::string, CellFactory> factories_;
};

} // namespace quillomat
