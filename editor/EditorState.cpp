#include "editor/EditorState.h"

namespace quillomat {

bool isDesignBuild() {
    return QUILLOMAT_DESIGN_MODE != 0;
}

} // namespace quillomat
