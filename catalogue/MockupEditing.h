// What the gallery needs of an editor: somewhere to put the tapped mockup's name.
#pragma once

#include <string>

namespace quillomat {

class MockupEditing {
public:
    virtual ~MockupEditing() = default;
    /// The mockup's name as the catalogue lists it, "-large" included; set before the editor's view loads.
    virtual void setImageInfo(std::string imageInfo) = 0;
};

} // namespace quillomat
