// How the tests find things: by the name that a screen reader would say.
.pragma library

function find(item, name) {
    if (!item)
        return null;
    if (item.objectName === name && item.visible)
        return item;
    const children = item.children ?? [];
    for (let i = children.length - 1; i >= 0; --i) {
        const found = find(children[i], name);
        if (found)
            return found;
    }
    return null;
}
