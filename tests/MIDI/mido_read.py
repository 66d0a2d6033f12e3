# Reads a MIDI file with mido and prints the channel and system messages of every track, one per
# line: "TRACK TICK CHANNEL TYPE DATA1 DATA2" with absolute ticks, in the decoder's terms (TYPE is
# the status without its channel for channel messages, the whole status byte otherwise; absent
# data bytes are 0). Meta events and sysex are left out. Usage: mido_read.py FILE.mid
import sys

import mido

midi = mido.MidiFile(sys.argv[1])
lines = ['format %d division %d tracks %d' % (midi.type, midi.ticks_per_beat, len(midi.tracks))]
for number, track in enumerate(midi.tracks):
    tick = 0
    for msg in track:
        tick += msg.time
        if msg.is_meta or msg.type == 'sysex':
            continue
        data = msg.bytes()
        status = data[0]
        channel, kind = (status & 0x0F, status & 0xF0) if status < 0xF0 else (0, status)
        data = data[1:] + [0, 0]
        lines.append('%d %d %d %d %d %d' % (number, tick, channel, kind, data[0], data[1]))
print('\n'.join(lines))
