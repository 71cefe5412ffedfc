# What the screen reader's user has chosen: the voice of the tests, no echo of the keys that they press, and a log in
# which each line stands as soon as it is written.
import orca.debug
import orca.settings

orca.settings.speechServerFactory = "silentspeech"
orca.settings.speechFactoryModules = ["silentspeech"]
orca.settings.enableKeyEcho = False
orca.settings.enableBraille = False
orca.debug.debugFile.reconfigure(line_buffering=True)
