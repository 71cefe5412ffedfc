#include "GalleryContent.h"

#include "support/SampleMessage.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

ChatAttachment file(const QString &name)
{
    ChatAttachment attachment;
    attachment.id = QUuid::createUuid();
    attachment.filename = name;
    return attachment;
}

constexpr auto formattedAnswer = R"(## Storage on this Mac

Your disk has **512 GB**, of which *about 180 GB* are free. The command `df -h /` says:

```bash
$ df -h /
Filesystem      Size  Used Avail Use% Mounted on
/dev/nvme0n1p2  512G  332G  180G  65% /  # a line that is quite a bit longer than the window is wide, so it wraps
```

The largest folders are:

1. `~/Movies`, with 96 GB
   - raw footage from **June**
   - two finished films
2. `~/Library/Caches`, with 31 GB. These can go:
   ```sh
   rm -r ~/Library/Caches/old
   ```
   It frees the space at once.
3. ~~`~/Downloads`~~ (already tidy)

| Folder | Size | Last used |
| :--- | ---: | :---: |
| Movies | 96 GB | yesterday |
| Caches | 31 GB | today |
| A folder with a rather long name that has to wrap | 4 GB | last year |

> This line stood in a quotation.

- [x] Look at the disk
- [ ] Empty the caches

More in [the manual](https://example.com/manual) or at https://example.com/a/very/long/address/that/goes/on/and/on.

---

### What next?

Shall I remove the caches?)";

} // namespace

void fillShowcase(Transcript &transcript, ActivityLog &activity)
{
    transcript.append(sampleMessage(Role::user, u"Check my Mac's storage"_s));
    transcript.append(sampleMessage(Role::assistant, QString::fromUtf8(formattedAnswer)));
    ChatMessage withFile =
        sampleMessage(Role::user, u"Yes, please. And look at the two reports that I attached, "
                                  "then tell me in one sentence what they have in common."_s);
    withFile.attachments = {file(u"report.pdf"_s), file(u"notes.txt"_s)};
    transcript.append(withFile);
    ChatMessage failed = sampleMessage(Role::assistant, u"I will look at both files."_s);
    failed.errorMessage =
        u"Could not connect to the AI provider. Check your internet connection and try again."_s;
    transcript.append(failed);
    transcript.append(sampleMessage(
        Role::user, u"Donaudampfschifffahrtselektrizitätenhauptbetriebswerkbauunterbeamtengesellschaft"
                    "Donaudampfschifffahrtselektrizitätenhauptbetriebswerkbauunterbeamtengesellschaft"_s));
    transcript.append(sampleMessage(Role::user, u"مرحبا بالعالم"_s));
    activity.log(u"Running: run the command: du -sh ~/*"_s, ActivityStep::Kind::tool);
    activity.log(u"run shell command returned: 96G Movies 31G Library 4G Documents and a good deal more "
                 "that does not fit on one line of the log"_s,
                 ActivityStep::Kind::info);
    activity.log(u"web search failed: Error: The network is unreachable."_s, ActivityStep::Kind::error);
    activity.log(u"Finished. Completed: run shell command, web search."_s, ActivityStep::Kind::success);
    ChatMessage streaming = sampleMessage(Role::assistant, u"Both reports are about **the same quarter"_s);
    streaming.isStreaming = true;
    transcript.append(streaming);
}

} // namespace morvane
