"""How a script ends that somebody interrupts."""

import signal
import sys


def exit_with(main, farewell):
    """Exits with main's result. SIGINT, SIGTERM and SIGHUP raise KeyboardInterrupt in it; when it lets that through,
    prints the farewell and ends by the signal."""
    for number in (signal.SIGTERM, signal.SIGHUP):
        if signal.getsignal(number) != signal.SIG_IGN: # as nohup leaves it
            signal.signal(number, signal.default_int_handler)
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        print(farewell, flush=True)
        # Ended by the signal, so that a shell which called it goes no further either.
        signal.signal(signal.SIGINT, signal.SIG_DFL)
        signal.raise_signal(signal.SIGINT)
