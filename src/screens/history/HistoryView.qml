import QtQuick
import Marlet

/// What was done to which file.
FocusScope {}
