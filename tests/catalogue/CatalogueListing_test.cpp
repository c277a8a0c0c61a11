#include "catalogue/CatalogueListing.h"

#include "CatalogueTest.h"

#include <gmock/gmock.h>

namespace quillomat::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ListingTest : public CatalogueTest {
protected:
    std::vector<ListedRow> rows() { return listCatalogue(CatalogueDocument(fake.platform)); }
};

TEST_F(ListingTest, listsRowsAndMockupsInTheirOrder) {
    EXPECT_THAT(rows(), ElementsAre(ListedRow{"Phones", {{"phone.png", false}, {"phone-large.png", false}}},
                                    ListedRow{"Imported", {}}));
}

TEST_F(ListingTest, listsWhatTheGalleryShows) {
    fake.putDocument("a.cfg", "{}");
    fake.putDocument("a.png", "x");
    fake.putDocument("b.cfg", "{}");
    EXPECT_EQ(rows().at(1), (ListedRow{"Imported", {{"a.png", true}}}));
    EXPECT_THAT(identifiers(*openGallery("Imported")), ElementsAre("a.png"));
}

TEST_F(ListingTest, builtInReplacedByAnImportCountsAsImported) {
    fake.putDocument("phone.cfg", "{}");
    EXPECT_EQ(rows().at(0), (ListedRow{"Phones", {{"phone.png", true}, {"phone-large.png", false}}}));
}

TEST_F(ListingTest, brokenCatalogueListsNothing) {
    for (const char* text : {"", "garbage", "[]", R"({"tableItems": null})"}) {
        fake.putDocument("main.json", text);
        EXPECT_THAT(rows(), IsEmpty()) << text;
    }
}

TEST_F(ListingTest, rowsWithoutGalleryAreEmpty) {
    fake.putDocument("main.json", R"({"tableItems": [null, {"typeLabel": 5}], "viewInfo": null})");
    EXPECT_THAT(rows(), ElementsAre(ListedRow{"(null)", {}}, ListedRow{"5", {}}));
}

} // namespace
} // namespace quillomat::testing
