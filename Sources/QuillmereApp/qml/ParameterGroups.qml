pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The parameter rows under the titles of their groups, then chance and seed. In two columns when there is room:
// the first two groups on the left, the rest on the right.
Item {
    id: groups

    required property CharacterController character
    required property bool twoColumns
    required property real rowHeight
    property bool emphasised: true

    readonly property real headingHeight: 30
    readonly property real gap: Theme.between  // above every heading but a column's first
    readonly property real columnGap: 32
    readonly property real columnWidth: twoColumns ? (width - columnGap) / 2 : width

    // The row that the keyboard was in last
    property int current: 0

    // As wide as the widest row needs
    property real titleWidth: 0
    property real valueWidth: 0

    // Of each group: its first row, its column and its top; of the columns: where they end, and their rows.
    readonly property var places: placesAt(rowHeight)
    // What stands below the groups of the second column, or of the only one
    readonly property real belowGroups: gap + chance.height

    // The row height at which everything is that high.
    function rowHeightFor(height: real): real {
        const bare = placesAt(0);
        const last = twoColumns ? 1 : 0;
        let fits = Infinity;
        for (let column = 0; column <= last; ++column) {
            const rest = height - bare.bottoms[column] - (column === last ? belowGroups : 0);
            fits = Math.min(fits, rest / bare.rows[column]);
        }
        return fits;
    }
    function heightFor(rowHeight: real): real {
        const bottoms = placesAt(rowHeight).bottoms;
        return Math.max(bottoms[0], bottoms[twoColumns ? 1 : 0] + belowGroups);
    }
    function placesAt(rowHeight: real): var {
        const result = {
            "groups": [],
            "bottoms": [0, 0],
            "rows": [0, 0]
        };
        let first = 0;
        for (let group = 0; group < character.parameters.groupTitles.length; ++group) {
            const rows = character.parameters.rowsOfGroup(group).length;
            const column = twoColumns && group >= 2 ? 1 : 0;
            const top = result.bottoms[column] + (result.bottoms[column] > 0 ? gap : 0);
            result.groups.push({
                    "first": first,
                    "column": column,
                    "top": top
                });
            result.bottoms[column] = top + headingHeight + rows * rowHeight;
            result.rows[column] += rows;
            first += rows;
        }
        return result;
    }

    // Where the pointer or the keyboard came last.
    property ParameterRow meant: null

    // The parameter under the pointer or with the keyboard, the newer of the two; "" for none.
    function pointedParameter(): string {
        if (meant && (meant.pointed || meant.sliderHasKeyboard))
            return meant.parameterId;
        for (let row = 0; row < parameterRows.count; ++row) {
            const item = parameterRows.itemAt(row) as ParameterRow;
            if (item.pointed || item.sliderHasKeyboard)
                return item.parameterId;
        }
        return "";
    }
    function columnX(column: int): real {
        return column * (columnWidth + columnGap);
    }

    implicitHeight: Math.max(places.bottoms[0], chance.y + chance.height)

    Repeater {
        model: groups.character.parameters.groupTitles

        Label {
            required property string modelData
            required property int index

            x: groups.columnX(groups.places.groups[index].column)
            y: groups.places.groups[index].top
            width: groups.columnWidth
            height: groups.headingHeight
            verticalAlignment: Text.AlignVCenter
            text: modelData
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
            font.weight: Font.DemiBold
            wrapMode: Text.NoWrap
            Accessible.role: Accessible.Heading
        }
    }
    Repeater {
        id: parameterRows
        model: groups.character.parameters
        onItemAdded: (index, item) => {
            const row = item as ParameterRow;
            groups.titleWidth = Math.max(groups.titleWidth, row.naturalTitleWidth);
            groups.valueWidth = Math.max(groups.valueWidth, row.naturalValueWidth);
        }

        ParameterRow {
            required property int index
            required property int groupIndex
            readonly property var place: groups.places.groups[groupIndex]

            // The locks stand in the margin.
            x: groups.columnX(place.column) - lockWidth
            y: place.top + groups.headingHeight + (index - place.first) * groups.rowHeight
            width: groups.columnWidth + lockWidth
            height: groups.rowHeight
            character: groups.character
            titleWidth: groups.titleWidth
            valueWidth: groups.valueWidth
            emphasised: groups.emphasised
            isStop: index === groups.current
            onReached: groups.current = index
            onPointedChanged: if (pointed)
                groups.meant = this
            onSliderHasKeyboardChanged: if (sliderHasKeyboard)
                groups.meant = this
            onMoveRequested: rows => {
                const next = parameterRows.itemAt(index + rows) as ParameterRow;
                if (next)
                    next.takeKeyboard();
            }
        }
    }
    ChanceSection {
        id: chance
        x: groups.columnX(groups.twoColumns ? 1 : 0)
        y: groups.places.bottoms[groups.twoColumns ? 1 : 0] + groups.gap
        width: groups.columnWidth
        character: groups.character
        titleWidth: groups.titleWidth
        valueWidth: groups.valueWidth
        headingHeight: groups.headingHeight
        emphasised: groups.emphasised
    }
}
