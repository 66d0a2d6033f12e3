# Writes a format 1 MIDI file with mido: several tracks, running status (mido's writer uses it for
# consecutive channel messages of one status), sysex, many meta events, note-ons of velocity 0,
# system common messages and long deltas; or a format 0 file of one such track.
# Usage: mido_write.py OUT.mid [FORMAT]
import random
import sys

import mido

rng = random.Random(20240917)
LONG_DELTAS = [127, 128, 16383, 16384, 2097151, 2097152, 0x0FFFFFFF]


def channel_message(channel):
    kind = rng.choice(['note_on', 'note_on', 'note_off', 'polytouch', 'control_change',
                       'program_change', 'aftertouch', 'pitchwheel'])
    if kind == 'note_on':
        return mido.Message('note_on', channel=channel, note=rng.randrange(128),
                            velocity=rng.choice([0, rng.randrange(1, 128)]))
    if kind == 'note_off':
        return mido.Message('note_off', channel=channel, note=rng.randrange(128), velocity=rng.randrange(128))
    if kind == 'polytouch':
        return mido.Message('polytouch', channel=channel, note=rng.randrange(128), value=rng.randrange(128))
    if kind == 'control_change':
        return mido.Message('control_change', channel=channel, control=rng.randrange(128), value=rng.randrange(128))
    if kind == 'program_change':
        return mido.Message('program_change', channel=channel, program=rng.randrange(128))
    if kind == 'aftertouch':
        return mido.Message('aftertouch', channel=channel, value=rng.randrange(128))
    return mido.Message('pitchwheel', channel=channel, pitch=rng.randrange(-8192, 8192))


def meta_events():
    return [
        mido.MetaMessage('track_name', name='Track'),
        mido.MetaMessage('copyright', text='(c) nobody'),
        mido.MetaMessage('set_tempo', tempo=rng.randrange(200000, 1000000)),
        mido.MetaMessage('time_signature', numerator=3, denominator=8),
        mido.MetaMessage('key_signature', key='Eb'),
        mido.MetaMessage('smpte_offset', hours=1, minutes=2, seconds=3, frames=4, sub_frames=5),
        mido.MetaMessage('marker', text='x' * 200),
        mido.MetaMessage('sequencer_specific', data=[0x7D, 1, 2, 3]),
    ]


def track(number):
    t = mido.MidiTrack()
    for meta in meta_events():
        meta.time = rng.randrange(3)
        t.append(meta)
    channel = number % 16
    long_deltas = list(LONG_DELTAS) if number == 1 else []
    for i in range(600):
        roll = rng.random()
        if roll < 0.03:
            msg = mido.Message('sysex', data=[rng.randrange(128) for _ in range(rng.choice([0, 5, 130]))])
        elif roll < 0.05:
            msg = mido.MetaMessage('text', text='event %d' % i)
        elif roll < 0.06:
            msg = mido.Message('quarter_frame', frame_type=rng.randrange(8), frame_value=rng.randrange(16))
        elif roll < 0.07:
            msg = mido.Message('songpos', pos=rng.randrange(16384))
        else:
            # Long runs of one channel give running status.
            if rng.random() < 0.1:
                channel = rng.randrange(16)
            msg = channel_message(channel)
        if long_deltas and rng.random() < 0.05:
            msg.time = long_deltas.pop()
        else:
            msg.time = rng.choice([0, 0, 1, rng.randrange(1000)])
        t.append(msg)
    return t


kind = int(sys.argv[2]) if len(sys.argv) > 2 else 1
out = mido.MidiFile(type=kind, ticks_per_beat=960)
for n in range(4 if kind == 1 else 1):
    out.tracks.append(track(n))
out.save(sys.argv[1])
