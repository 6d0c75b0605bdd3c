#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A clip through a chain, read and written by PyAV, with its sound as it is: clip.py IN OUT FILTER..."""
import collections
import sys

import av

import vireo


def main(source, target, *filters):
    chain = vireo.Chain(*filters)
    with av.open(source) as reading, av.open(target, "w") as writing:
        video = reading.streams.video[0]
        video.thread_type = "AUTO"
        rate = video.average_rate
        written = writing.add_stream("libx264", rate=rate)
        written.width, written.height, written.pix_fmt = video.width, video.height, "yuv420p"
        written.codec_context.time_base = video.time_base
        copies = {sound.index: writing.add_stream(template=sound) for sound in reading.streams.audio}
        times = collections.deque()

        def frames():
            """The pictures; the sound is passed on between them."""
            for packet in reading.demux(video, *reading.streams.audio):
                if packet.stream is video:
                    for frame in packet.decode():
                        times.append(frame.pts)
                        yield frame.to_ndarray(format="rgb24")
                elif packet.dts is not None:
                    packet.stream = copies[packet.stream.index]
                    writing.mux(packet)

        for picture in chain.stream(frames(), rate=rate, frames=video.frames):
            frame = av.VideoFrame.from_ndarray(picture, format="rgb24")
            frame.pts, frame.time_base = times.popleft(), video.time_base
            writing.mux(written.encode(frame))
        writing.mux(written.encode())


if __name__ == "__main__":
    main(*sys.argv[1:])
