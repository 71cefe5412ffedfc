# What the screen reader's user has chosen: the voice of the tests, and no echo of the keys that they press.
import orca.settings

orca.settings.speechServerFactory = "silentspeech"
orca.settings.speechFactoryModules = ["silentspeech"]
orca.settings.enableKeyEcho = False
orca.settings.enableBraille = False
