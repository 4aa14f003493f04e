import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    readonly property string trackerFile: ".ostrelle/ostrelle-project-tracker.json"

    name: "ProjectsView"

    Component {
        id: projectsView

        ProjectsView {
            id: view

            width: 380
            height: 600
            viewModel: fixture.models.makeProjects(view)
        }
    }

    // The view once it shows this.
    function loadedView(projects: var): Item {
        fixture.write(".ostrelle/ostrelle-agent-tracker.json", '{"agents":{},"completions":[]}');
        fixture.write(test.trackerFile, JSON.stringify({version: 1, updated: "", projects: projects}));
        const view = createTemporaryObject(projectsView, test);
        tryCompare(view.viewModel, "isLoading", false);
        tryVerify(() => projects.slice(0, 3).every(each => Items.withText(view, each.name)));
        return view;
    }

    function project(id: string, status: string): var {
        return {
            id: id, name: "Project " + id, description: "About " + id, status: status, progress: 42,
            workstreams: [
                {id: "w1", name: "Design", status: "green", progress: 80, note: "nearly there"},
                {id: "w2", name: "Print", status: "idle", progress: 5, note: ""}
            ]
        };
    }

    function test_unfoldsTheWorkstreams() {
        const view = loadedView([project("a", "green"), Object.assign(project("b", "red"), {workstreams: []})]);
        compare(told(view), "PROJECTS:teal|Project Board|1/2, healthy projects:green|Refresh^|<arrow.clockwise>~|Project a, green, 42%, About a, "
            + "2 workstreams, collapsed|:green|:teal|~|:green|<chevron.right>~|~|Project b, red, 42%, About b, 0 workstreams|:red|:teal|~|:red"
            + "|~");
        mouseClick(Items.withText(view, "Project a"));
        tryVerify(() => Items.withText(view, "nearly there"));
        compare(told(Items.withText(view, "Project a")), "Project a, green, 42%, About a, 2 workstreams, expanded|:green|:teal|~|:green"
            + "|<chevron.down>~|~|green:green|Design|nearly there~|80%~|idle:yellow|Print|5%~");
    }

    function test_keyboardWalksInVisualOrder() {
        const names = Array.from({length: 40}, (_, i) => String(i));
        const view = loadedView(names.map(each => project(each, "green")));
        const list = Items.visibleItems(view).find(each => each.contentY !== undefined);
        const isAt = index => tryVerify(() => {
            const card = Items.withText(view, "Project " + index);
            const top = card?.mapToItem(list, 0, 0).y;
            return card?.visualFocus && top >= 0 && top + card.height <= list.height;
        }, 5000, String(index));
        const refresh = Items.withText(view, "Refresh");
        refresh.forceActiveFocus(Qt.TabFocusReason);
        for (const [key, times, index] of [
            [Qt.Key_Tab, 3, 2], [Qt.Key_Return, 1, 2], [Qt.Key_Down, 4, 6], [Qt.Key_Up, 1, 5],
            [Qt.Key_End, 1, 39], [Qt.Key_Down, 1, 39], [Qt.Key_PageUp, 10, 0], [Qt.Key_PageDown, 10, 39],
            [Qt.Key_Backtab, 37, 2]]) {
            Array.from({length: times}).forEach(() => keyClick(key));
            tryVerify(() => key !== Qt.Key_Down || index === 39 || Items.visibleItems(list).some(each => each.shown === 1));
            isAt(index);
        }
        verify(Items.withText(view, "Project 2").expanded);
        list.positionViewAtEnd(); // the card at the keyboard goes out of view
        keyClick(Qt.Key_Backtab);
        isAt(1);
        keyClick(Qt.Key_Home);
        keyClick(Qt.Key_Backtab);
        verify(refresh.visualFocus);
        keyClick(Qt.Key_Backtab); // around
        isAt(39);
        keyClick(Qt.Key_Return);
        const last = Items.withText(view, "Project 39");
        tryVerify(() => Items.visibleItems(last).some(each => each.shown === 1));
        isAt(39);
        keyClick(Qt.Key_Tab);
        verify(refresh.visualFocus && Items.visibleItems(view).find(each => each.policy !== undefined).Accessible.ignored);
    }

    function test_aCardHigherThanThePageIsReadToItsEnd() {
        const view = loadedView([project("a", "green"), project("b", "green")]);
        const list = Items.visibleItems(view).find(each => each.contentY !== undefined);
        const card = Items.withText(view, "Project a");
        view.height = 112;
        card.forceActiveFocus(Qt.TabFocusReason);
        verify(card.height > list.height + 28 && list.clip && list.headerItem.height === 0);
        verify(view.walk(card, Qt.Key_Down) && list.contentY > 0); // and nobody else scrolls for that key
        while (card.y + card.height > list.contentY + list.height) {
            const before = list.contentY;
            keyClick(Qt.Key_PageDown);
            verify(card.activeFocus && list.contentY > before && list.contentY <= before + list.height);
        }
        verify(view.walk(card, Qt.Key_PageDown));
        tryVerify(() => Items.withText(view, "Project b").visualFocus);
        [view.height, list.contentY] = [view.height + card.height - list.height, card.y + 5]; // as high as the page
        verify(!view.readOn(card, Qt.Key_Up));
    }

    function test_refreshLoadsAgainAndAsksForMore() {
        const view = createTemporaryObject(projectsView, test, {viewModel: fixture.projectsVM()});
        fixture.write(test.trackerFile, JSON.stringify(
            {version: 1, updated: "", projects: [project("new", "green")]}));
        mouseClick(Items.withText(view, "Refresh"));
        tryVerify(() => Items.withText(view, "Project new"));
        tryVerify(() => fixture.read("asked") === "/usr/bin/env which duskrell");
    }
}
