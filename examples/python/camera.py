#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A camera, or a clip, through a chain in a window of OpenCV's: camera.py [--save OUT] [CAMERA|CLIP] FILTER...

Escape ends it. With --save frames go into a file, and there is no window."""
import sys

import cv2

import vireo


def frames(capture):
    while True:
        there, frame = capture.read()
        if not there:
            return
        yield frame


def main(*words):
    saved = None
    if words[0] == "--save":
        saved, words = words[1], words[2:]
    source, *filters = words
    capture = cv2.VideoCapture(int(source) if source.isdigit() else source)
    rate = capture.get(cv2.CAP_PROP_FPS) or 25
    writer = None
    for frame in vireo.Chain(*filters, threads=2).stream(frames(capture), rate=rate, layout="bgr"):
        if saved is None:
            cv2.imshow("vireo", frame)
            if cv2.waitKey(1) == 27:
                break
            continue
        if writer is None:
            writer = cv2.VideoWriter(saved, cv2.VideoWriter_fourcc(*"MJPG"), rate, frame.shape[1::-1])
        writer.write(frame)
    capture.release()
    if writer is not None:
        writer.release()


if __name__ == "__main__":
    main(*sys.argv[1:])
