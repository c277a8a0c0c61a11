#include "cli/publishing/Publication.h"

#include "catalogue/CatalogueDocument.h"
#include "cli/publishing/DefinitionCheck.h"
#include "editor/MockupDefinition.h"
#include "geometry/Quad.h"
#include "platform/foundation/Conversions.h"
#include "platform/foundation/NumericOrder.h"
#include "platform/graphics/ImageFile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>

namespace quillomat {

namespace {

constexpr double previewSide = 300;
constexpr double halfMarker = 10;

/// The names a web address can carry without escaping: the application fetches pictures by their names as they stand.
bool needsNoEscaping(const std::string& name) {
    return isPlainFileName(name) && std::all_of(name.begin(), name.end(), [](unsigned char c) {
               return std::isalnum(c) != 0 || c == '-' || c == '.' || c == '_' || c == '~';
           });
}

class Collector {
public:
    Collector(World& world, std::string row) : document_(world.platform()), world_(world), row_(std::move(row)) {}

    Result<Publication> collect() {
        result_.catalogue = document_.JSONFromFile();
        if (!result_.catalogue.isObject()) {
            return Failure{"there is no catalogue to publish"};
        }
        checkImportedEntry();
        for (const auto& definition : document_.importedDefinitions()) {
            joinImport(definition);
        }
        collectRows();
        if (!problems_.empty()) {
            std::string reasons = problems_.front();
            for (std::size_t i = 1; i < problems_.size(); ++i) {
                reasons += "\n" + problems_[i];
            }
            return Failure{reasons};
        }
        result_.localVersion = result_.catalogue["version"].stringValue();
        result_.catalogue = withoutMember(withoutMember(result_.catalogue, "version"), "otaImages");
        return std::move(result_);
    }

private:
    void problem(const std::string& what, const std::string& why) { problems_.push_back(what + ": " + why); }

    static Value withoutMember(const Value& object, std::string_view key) {
        Value::Object members;
        for (const auto& member : object.members()) {
            if (member.first != key) {
                members.push_back(member);
            }
        }
        return Value::object(std::move(members));
    }

    /// Every gallery adds the user's imports to this entry and faults when it is absent.
    void checkImportedEntry() {
        if (!result_.catalogue["viewInfo"]["Imported"]["images"].isArray()) {
            problem("Imported", "the catalogue has no \"viewInfo\" entry \"Imported\" with an \"images\" array");
        }
    }

    void joinImport(const std::string& file) {
        const std::string name = pictureNameOfImport(file);
        if (!document_.pathOfDocument(name)) {
            return; // an import without its picture shows nowhere
        }
        const Value imported = document_.JSONFromDocument(file);
        if (!imported.isObject()) {
            problem(file, "is not a definition");
            return;
        }
        authors_[name] = imported.contains("author") ? describe(imported["author"]) : std::string();
        setDefinition(name, publishedDefinition(definitionFromImport(imported)));
        addToRow(name);
    }

    /// An import's definition as the catalogue carries one: with preview corners that lie where the screen is, and
    /// without the credit, which would take background and glare away.
    static Value publishedDefinition(const Value& converted) {
        const MockupDefinition definition(converted);
        const Size canvas = definition.canvasSize();
        const double scale = previewSide / std::max({canvas.width, canvas.height, 1.0});
        const double left = (previewSide - canvas.width * scale) / 2;
        const double top = (previewSide - canvas.height * scale) / 2;
        Value record = withoutMember(converted, "creator");
        for (const char* corner : {"topLeft", "topRight", "bottomLeft", "bottomRight"}) {
            for (const char axis : {'X', 'Y'}) {
                const std::string key = std::string(corner) + axis;
                const double pixel = definition.integer("F" + key) + halfMarker;
                const double point = pixel * scale + (axis == 'X' ? left : top) - halfMarker;
                record = record.withMember(key, Value::integer(std::lround(point)));
            }
        }
        return record;
    }

    void setDefinition(const std::string& name, const Value& record) {
        const Value definitions = result_.catalogue["editInfo"].withMember(name, record);
        result_.catalogue = result_.catalogue.withMember("editInfo", definitions);
    }

    void addToRow(const std::string& name) {
        const Value galleries = result_.catalogue["viewInfo"];
        if (!galleries[row_].isObject()) {
            makeRow(name);
        }
        const Value gallery = result_.catalogue["viewInfo"][row_];
        const auto& names = gallery["images"].elements();
        if (std::find(names.begin(), names.end(), Value::string(name)) != names.end()) {
            return; // it replaces the frame of that name
        }
        const Value longer = gallery.withMember("images", gallery["images"].withElement(Value::string(name)));
        result_.catalogue =
            result_.catalogue.withMember("viewInfo", result_.catalogue["viewInfo"].withMember(row_, longer));
    }

    /// The new row stands above "Imported", with its first frame as its preview.
    void makeRow(const std::string& firstFrame) {
        const Value row = Value::object({{"sizeLabel", Value::string("")},
                                         {"typeLabel", Value::string(row_)},
                                         {"descLabel", Value::string("Frames by the community.")},
                                         {"previewImage", Value::string(firstFrame)}});
        Value::Array rows;
        bool placed = false;
        for (const auto& existing : result_.catalogue["tableItems"].elements()) {
            if (!placed && existing["typeLabel"] == Value::string("Imported")) {
                rows.push_back(row);
                placed = true;
            }
            rows.push_back(existing);
        }
        if (!placed) {
            rows.push_back(row);
        }
        result_.catalogue = result_.catalogue.withMember("tableItems", Value::array(std::move(rows)));
        const Value empty = Value::object({{"images", Value::array({})}});
        result_.catalogue =
            result_.catalogue.withMember("viewInfo", result_.catalogue["viewInfo"].withMember(row_, empty));
    }

    void collectRows() {
        for (const auto& row : result_.catalogue["tableItems"].elements()) {
            const std::string title = describe(row["typeLabel"]);
            needPicture("row " + title, describe(row["previewImage"]));
            const Value gallery = result_.catalogue["viewInfo"][title]["images"];
            if (!gallery.isArray()) {
                problem("row " + title, "has no \"viewInfo\" entry with an \"images\" array");
            }
            for (const auto& entry : gallery.elements()) {
                collectFrame(title, describe(entry));
            }
        }
    }

    void collectFrame(const std::string& row, const std::string& name) {
        const Value definitions = result_.catalogue["editInfo"];
        const auto size = [this](const std::string& picture) { return pictureSize(picture); };
        for (const auto& why : problemsOfDefinition(name, definitions, size)) {
            problem(name, why);
        }
        const MockupDefinition definition(definitions[name]);
        needPicture(name, lookupNameOfMockup(name));
        if (const std::string glare = definition.text("overlay"); !glare.empty()) {
            needPicture(name, glare);
        }
        const auto author = authors_.find(name);
        result_.frames.push_back({row, name, lookupNameOfMockup(name), definition.canvasSize(),
                                  definition.hasSecondScreen() ? 2 : 1,
                                  author == authors_.end() ? std::string() : author->second});
    }

    void needPicture(const std::string& who, const std::string& name) {
        if (!needsNoEscaping(name)) {
            problem(who, "the name \"" + name + "\" would need escaping in a web address");
            return;
        }
        const auto path = pathOf(name);
        if (!path) {
            problem(who, "picture " + name + " is missing");
            return;
        }
        if (result_.pictures.emplace(name, *path).second) {
            result_.otaImages.push_back(name);
        }
    }

    std::optional<std::string> pathOf(const std::string& name) const {
        if (auto resource = world_.platform().bundle.pathForImageNamed(name)) {
            return resource;
        }
        return document_.pathOfDocument(name);
    }

    Result<PixelSize> pictureSize(const std::string& name) const {
        const auto path = pathOf(name);
        if (!path) {
            return Failure{"is missing"};
        }
        const auto bytes = world_.files().read(*path, ImageLimits{}.fileBytes);
        if (!bytes) {
            return Failure{bytes.reason()};
        }
        // Decoded whole: a picture that is damaged at its end must not be published.
        const auto decoded = decodeImage(*bytes, world_.platform().imageLimits);
        return decoded ? Result<PixelSize>(decoded->size()) : Result<PixelSize>(Failure{decoded.reason()});
    }

    CatalogueDocument document_;
    World& world_;
    std::string row_;
    Publication result_;
    std::map<std::string, std::string> authors_;
    std::vector<std::string> problems_;
};

} // namespace

Result<Publication> collectPublication(World& world, const std::string& row) {
    return Collector(world, row).collect();
}

std::string versionAfter(const std::string& a, const std::string& b) {
    std::string version = compareNumerically(a, b) > 0 ? a : b;
    const auto last = version.find_last_of("0123456789");
    if (last == std::string::npos) {
        return version + ".1";
    }
    std::size_t digit = last;
    while (version[digit] == '9') {
        version[digit] = '0';
        const bool isRunsFirst = digit == 0 || std::isdigit(static_cast<unsigned char>(version[digit - 1])) == 0;
        if (isRunsFirst) {
            return version.insert(digit, "1");
        }
        --digit;
    }
    ++version[digit];
    return version;
}

} // namespace quillomat
