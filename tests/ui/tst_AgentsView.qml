import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    name: "AgentsView"

    Component {
        id: agentsView

        AgentsView {
            id: view

            width: 380
            height: 600
            viewModel: fixture.models.makeAgents(view)
        }
    }

    function writeAgents(agents: var) {
        fixture.write(".ostrelle/ostrelle-agent-tracker.json", JSON.stringify({agents: agents, completions: []}));
    }

    function loadedView(agents: var): Item {
        writeAgents(agents);
        const view = createTemporaryObject(agentsView, test);
        tryCompare(view.viewModel, "isLoading", false);
        return view;
    }

    function bubble(view: Item, name: string): Item {
        return Items.visibleItems(view).find(each => each.shownName === name);
    }

    // The colours of what is drawn there, from the left to the right, at that part of its height.
    function across(view: Item, item: Item, part: real): var {
        const picture = grabImage(view);
        const left = item.mapToItem(view, 1, part * item.height);
        return Array.from({length: item.width}, (_, i) => String(picture.pixel(left.x + i, left.y)));
    }

    function test_layout_data() {
        return [
            {tag: "as designed", width: 380, centers: [[190, 80], [91.2, 180], [288.8, 204], [91.2, 276]],
             radii: [42, 32, 32, 32]},
            {tag: "wide", width: 600, centers: [[300, 96], [144, 216], [456, 244.8], [144, 331.2]],
             radii: [50.4, 38.4, 38.4, 38.4]}
        ];
    }

    function test_layout(row) {
        writeAgents({a: {}, b: {}, c: {}});
        const view = createTemporaryObject(agentsView, test, {width: row.width});
        const canvas = Items.visibleItems(view).find(each => each.contentY !== undefined);
        const spine = Items.visibleItems(view).find(each => each.stops !== undefined);
        compare([canvas.contentHeight, spine.moves, bubble(view, "Main")?.side], [200, false, 0]);
        tryCompare(canvas, "contentHeight", 480);
        const places = Items.visibleItems(view).filter(each => each.shownName !== undefined);
        compare(places.map(each => each.side), [0, -1, 1, -1]);
        places.forEach((each, i) => {
            fuzzyCompare(each.center.x, row.centers[i][0], 0.001);
            fuzzyCompare(each.center.y, row.centers[i][1], 0.001);
            fuzzyCompare(each.radius, row.radii[i], 0.001);
        });
        verify(canvas.clip && spine.y > places[0].center.y + places[0].radius);
        fuzzyCompare(spine.y + spine.height, places[3].center.y + 1.5 * places[3].radius, 1);
    }

    function test_lightFlowsAlongTheLine() {
        const view = loadedView({alpha: {}, beta: {}});
        const lines = Items.visibleItems(view).filter(each => each.toLeft !== undefined);
        compare(lines.map(each => [each.toLeft, each.thickness, String(each.color)]),
                [[true, 1.2, "#b3ff375f"], [false, 1.2, "#b3bf5af2"]]);
        lines.forEach(line => {
            const picture = grabImage(view);
            [0.3, 0.5, 0.8].forEach(part => {
                const place = line.mapToItem(view, line.pointAt(part));
                verify(picture.pixel(place.x, place.y).hsvSaturation > 0.02, part);
            });
            [0, 1].forEach(part => fuzzyCompare(line.pointAt(part).x,
                line.toLeft ? (1 - part) * line.width : part * line.width, 0.001));
        });
    }

    function test_movesOnlyWhileSeen() {
        const view = loadedView({alpha: {status: "busy"}, beta: {status: "idle"}, c: {}, d: {}, e: {}, f: {}, g: {}, h: {}, i: {status: "busy"}});
        const alpha = bubble(view, "Alpha");
        verify(alpha.moves && bubble(view, "Main").moves && !bubble(view, "Beta").moves);
        tryVerify(() => alpha.processingRing > 0.01); // after a few steps
        const branch = Items.visibleItems(view).find(each => each.energized);
        const spine = Items.visibleItems(view).find(each => each.stops !== undefined);
        compare(spine.colors.map(String), [Theme.tiffanyBlue, Theme.pink].map(String));
        view.visible = false;
        verify(!alpha.moves && !branch.moves);
        view.visible = true;
        mouseClick(alpha);
        verify(view.selectedNode && !alpha.moves);
    }

    function test_keyboardReachesTheLastOfMany() {
        const names = Array.from({length: 30}, (_, i) => "A" + String(i + 10));
        const view = loadedView(Object.assign({}, ...names.map(each => ({[each]: {}}))));
        bubble(view, "Main").forceActiveFocus(Qt.TabFocusReason);
        names.forEach(() => keyClick(Qt.Key_Tab));
        const last = bubble(view, "A39");
        verify(last.activeFocus && last.mapToItem(view, 0, last.height).y <= view.height && !bubble(view, "Main"));
        names.forEach(() => keyClick(Qt.Key_Backtab));
        verify(bubble(view, "Main")?.activeFocus);
    }

    function test_inspector() {
        const view = loadedView({alpha: {status: "busy", activity: "Counting", model: "m-1", progress: 7}});
        const alpha = bubble(view, "Alpha");
        compare(told(view), "AGENTS:tiffanyBlue|Spinal Map|Live data from status.json~|Refresh^|<arrow.clockwise>~|Main, active|<arc>:tiffanyBlue"
            + "|Alpha, busy · 7%|~|<arc>:pink");
        const disc = Items.visibleItems(alpha).find(each => each.emoji !== undefined);
        const picture = across(view, disc, 0.5).join();
        verify(picture.startsWith(String(disc.rimColor)));
        verify(new Set(across(view, disc, 0.1)).size > 9); // smooth edges
        verify(Qt.color(across(view, disc, 0.1)[32]).r < Qt.color(across(view, disc, 0.9)[32]).r); // darker above
        alpha.forceActiveFocus(Qt.TabFocusReason);
        tryVerify(() => across(view, disc, 0.5).join() !== picture);
        keyClick(Qt.Key_Return);
        compare(told(view), "Customize Bubble|Customize Bubble|Close^|<xmark>~|Agent Details|(Activity)~|Activity: Counting|(Model)~|Model: m-1"
            + "|(Progress)~|Progress: 7%|(Agent ID)~|Agent ID: alpha|(Display name)~|Display name(Alpha)|(Emoji)~"
            + "|Emoji(" + alpha.node.defaultEmoji + ")|Tip: use a single emoji for the cleanest circle rendering.~|Reset|#ff8f89|Save"
            + "|:textOnAccent");

        const field = hint => Items.visibleItems(view).find(each => each.placeholderText === hint);
        compare(field("Display name").text, "Alpha");
        field("Display name").text = "  Counter ";
        field("Emoji").text = "WWWWWW";
        mouseClick(Items.withText(view, "Save"));
        tryVerify(() => !view.selectedNode);
        compare(alpha.shownName, "Counter");
        compare(disc.emoji, "WWWWWW");
        compare(across(view, disc, 0.5).slice(0, 4).join(), picture.slice(0, 31)); // none of it on the rim
        verify(across(view, disc, 0.5).slice(4, 13).some(each => Qt.color(each).g > 0.3)); // but close to it, and light

        mouseClick(alpha);
        mouseClick(Items.withText(view, "Reset"));
        tryVerify(() => !view.selectedNode);
        compare(alpha.shownName, "Alpha");
        compare(disc.emoji, alpha.node.defaultEmoji);

        mouseClick(alpha);
        verify(view.closeQuestion() && !view.selectedNode && !view.closeQuestion());
        mouseClick(alpha);
        verify(field("Display name").activeFocus);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !view.selectedNode);
        verify(alpha.activeFocus);
    }
}
