import QtQuick
import Marlet

/// Text in one of the program's few sizes; always plain, elided when it doesn't fit.
/// It begins where rows begin, whichever way it is read itself.
Text {
    id: words

    enum Kind { Body, Quiet, Small, RowTitle, Heading, PageTitle }
    property int kind: Words.Body

    textFormat: Text.PlainText
    elide: Text.ElideRight
    horizontalAlignment: Text.AlignLeft
    color: kind === Words.Quiet || kind === Words.Small ? Theme.quiet : Theme.ink
    font.family: Theme.family
    font.pixelSize: kind === Words.Small ? Theme.small
                  : kind === Words.RowTitle || kind === Words.Heading ? Theme.rowTitle
                  : kind === Words.PageTitle ? Theme.pageTitle : Theme.body
    font.weight: kind === Words.RowTitle || kind === Words.Heading || kind === Words.PageTitle
                 ? Font.DemiBold : Font.Normal
    lineHeight: wrapMode === Text.NoWrap ? 1 : 1.2
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text === ""
}
