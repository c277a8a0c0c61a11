#include "cli/Commands.h"
#include "cli/MockupList.h"

#include <algorithm>

namespace quillomat {

namespace {

std::string canvasText(const MockupSummary& mockup) {
    return std::to_string(static_cast<long>(mockup.canvas.width)) + " x " +
           std::to_string(static_cast<long>(mockup.canvas.height));
}

std::string screensText(const MockupSummary& mockup) {
    return mockup.screens == 1 ? "1 screen" : std::to_string(mockup.screens) + " screens";
}

Value rowsAsJson(const std::vector<MockupSummary>& mockups, const std::vector<std::string>& rows) {
    Value::Array result;
    for (const auto& row : rows) {
        Value::Array members;
        for (const auto& mockup : mockups) {
            if (mockup.row != row) {
                continue;
            }
            members.push_back(Value::object({
                {"name", Value::string(mockup.name)},
                {"width", Value::integer(static_cast<std::int64_t>(mockup.canvas.width))},
                {"height", Value::integer(static_cast<std::int64_t>(mockup.canvas.height))},
                {"screens", Value::integer(mockup.screens)},
                {"credit", mockup.author ? Value::string(*mockup.author) : Value::null()},
                {"imported", Value::boolean(mockup.imported)},
            }));
        }
        result.push_back(Value::object({{"row", Value::string(row)}, {"mockups", Value::array(std::move(members))}}));
    }
    return Value::array(std::move(result));
}

/// Columns for a person, tabs for a script.
void printColumns(const std::vector<std::vector<std::string>>& lines) {
    const bool aligned = isResultOnTerminal();
    std::vector<std::size_t> widths;
    for (const auto& line : lines) {
        widths.resize(std::max(widths.size(), line.size()));
        for (std::size_t column = 0; column < line.size(); ++column) {
            widths[column] = std::max(widths[column], line[column].size());
        }
    }
    for (const auto& line : lines) {
        std::string text;
        for (std::size_t column = 0; column < line.size(); ++column) {
            text += line[column];
            if (column + 1 < line.size()) {
                text += aligned ? std::string(widths[column] - line[column].size() + 2, ' ') : std::string("\t");
            }
        }
        text.erase(text.find_last_not_of(aligned ? " " : "") + 1);
        printLine(text);
    }
}

} // namespace

ExitStatus runList(const GlobalOptions& options) {
    const auto world = World::open(options);
    if (!world) {
        return fail("list", world.reason());
    }
    const auto mockups = listMockups(**world);
    if (options.json) {
        printJson(rowsAsJson(mockups, listRows(**world)));
        return ExitStatus::done;
    }
    std::vector<std::vector<std::string>> lines;
    for (const auto& mockup : mockups) {
        lines.push_back({printable(mockup.row), printable(mockup.name), canvasText(mockup), screensText(mockup),
                         printable(mockup.author.value_or(""))});
    }
    printColumns(lines);
    return ExitStatus::done;
}

} // namespace quillomat
