"""A voice for the screen reader that makes no sound: writes what it is given to speak, one JSON string a line, to the
file that the environment variable SILENT_SPEECH_FILE names."""

import json
import os

from orca import speechserver


class SpeechServer(speechserver.SpeechServer):
    _server = None

    @staticmethod
    def getFactoryName():
        return "Silent speech"

    @staticmethod
    def getSpeechServers():
        return [SpeechServer.getSpeechServer()]

    @staticmethod
    def getSpeechServer(info=None):
        if SpeechServer._server is None:
            SpeechServer._server = SpeechServer()
        return SpeechServer._server

    @staticmethod
    def shutdownActiveServers():
        SpeechServer._server = None

    def __init__(self):
        super().__init__()
        self._spoken = open(os.environ["SILENT_SPEECH_FILE"], "a", encoding="utf-8")

    def getInfo(self):
        return ["Silent speech", "silent"]

    def getVoiceFamilies(self):
        return []

    def _write(self, text):
        if text and text.strip():
            self._spoken.write(json.dumps(text.strip(), ensure_ascii=False) + "\n")
            self._spoken.flush()

    def speak(self, text=None, acss=None, interrupt=True):
        self._write(text)

    def speakCharacter(self, character, acss=None):
        self._write(character)

    def sayAll(self, utteranceIterator, progressCallback):
        for context, _ in utteranceIterator:
            self._write(context.utterance)
