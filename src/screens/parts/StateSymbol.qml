import QtQuick
import Marlet

/// How a file or job stands, as a symbol of its own shape and colour. The word is beside it.
Glyph {
    property string state: "none"

    size: Theme.px(18)
    name: state === "ready" || state === "done" ? "check"
        : state === "look" ? "triangle"
        : state === "failed" ? "failed"
        : state === "running" ? "play"
        : state === "waiting" ? "dots"
        : state === "skipped" ? "minus" : "info"
    color: state === "ready" || state === "done" ? Theme.ready
         : state === "look" ? Theme.look
         : state === "failed" ? Theme.failed
         : state === "running" ? Theme.accent : Theme.quiet
}
