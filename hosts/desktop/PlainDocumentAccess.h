// Access to picked files on a platform without sandboxes: always granted, nothing to coordinate.
#pragma once

#include "platform/views/Platform.h"

namespace quillomat {

class PlainDocumentAccess final : public DocumentAccess {
public:
    bool startAccessing(const std::string& path) override;
    void stopAccessing(const std::string& path) override;
    void coordinateReading(const std::string& path, const std::function<void()>& read) override;
};

} // namespace quillomat
