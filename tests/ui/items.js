.pragma library

// What can be seen of an item: how tests find their way through a view.

// All visible items below this one, it included, in the order of their drawing.
function visibleItems(item) {
    if (!item?.visible) { // or gone meanwhile
        return [];
    }
    return [item].concat(...Array.from(item.children, visibleItems));
}

function texts(item) {
    return visibleItems(item).filter(each => typeof each.text === "string")
        .map(each => each.text);
}

// The visible item that has this text, or undefined. Of a button and its label it is the button.
function withText(item, text) {
    return visibleItems(item).find(each => each.text === text);
}

// The visible symbol of that name, or undefined.
function symbol(item, name) {
    return visibleItems(item).find(each => each.name === name && each.source !== undefined);
}
