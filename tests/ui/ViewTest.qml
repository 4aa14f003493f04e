import QtQuick
import QtTest
import Ostrelle
import "items.js" as Items

// A test of views, each in a new world: `fixture`.
TestCase {
    id: test

    // Of what is told; that of most texts is not.
    readonly property var signs: ["textSecondary", "teal", "green", "red", "yellow", "blue", "purple", "pink", "cyan",
        "grey", "tiffanyBlue", "textOnAccent"].reduce((known, name) => Object.assign(known, {
            [String(Theme[name])]: name === "textSecondary" ? "~" : ":" + name}), {[String(Theme.textPrimary)]: ""})

    when: windowShown
    visible: true
    width: 380
    height: 600

    function init() {
        fixture.reset();
    }

    // All that is told of a view, in the order of its drawing: what a screen reader says, "(what is only seen)" unless
    // that was just said, "()" for an empty line, "<a symbol>", their colour, whether it is on, "!" where it cannot be used, and "^" where it is raised.
    function told(view: Item): string {
        let said = "";
        return Items.visibleItems(view).map(each => {
            const spoken = each.Accessible.ignored ? [] : [each.Accessible.name, each.Accessible.description];
            const seen = each.contentWidth !== undefined ? each.text ?? "" : "";
            const symbol = each.name && each.source !== undefined ? "<" + each.name + ">" : "";
            const color = each.tint ?? (seen || symbol ? each.color : undefined);
            const words = spoken.filter(part => part).join(", ");
            said = words || said;
            return words + (said.includes(seen) && (seen || each.elide === undefined) ? "" : "(" + seen + ")") + symbol
                + (color && color !== Theme.surface ? test.signs[String(color)] ?? String(color) : "")
                + (each.checkable ? each.checked ? " on" : " off" : "") + (each.clicked && !each.enabled ? "!" : "")
                + (each.raised ? "^" : "");
        }).filter(part => part !== "").join("|");
    }
}
