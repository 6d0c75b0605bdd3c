// SPDX-License-Identifier: MIT
// A stream of the browser, as of a camera, that goes through a chain while it runs.
import { disposal } from './handle.mjs';
import { VireoError } from './interface.mjs';

/** Calls back at each frame that a video shows, until `isOver()`. */
function eachFrame(video, isOver, work) {
    const next = video.requestVideoFrameCallback
        ? (step) => video.requestVideoFrameCallback((_, { mediaTime }) => step(mediaTime))
        : (step) => requestAnimationFrame(() => step(video.currentTime));
    const step = (time) => {
        if (isOver()) return;
        work(time);
        next(step);
    };
    next(step);
}

export class Live {
    #video = Object.assign(document.createElement('video'), { muted: true, playsInline: true });
    #frames;
    #isStopped = false;
    #failed;
    #inner = new OffscreenCanvas(1, 1).getContext('2d', { willReadFrequently: true });
    #outer = document.createElement('canvas').getContext('2d');

    constructor(chain, stream, { rate = 30, onError = null } = {}) {
        const [track] = stream.getVideoTracks();
        if (!track) throw new VireoError('the stream has no picture');
        this.#frames = chain.startStream({ rate });
        this.#failed = onError;
        const { width = 300, height = 150 } = track.getSettings();
        this.#fit(width, height);
        this.stream = this.#outer.canvas.captureStream();
        for (const sound of stream.getAudioTracks()) this.stream.addTrack(sound);
        track.addEventListener('ended', () => this.dispose(), { once: true });
        this.#video.srcObject = stream;
        this.#video.play().catch((error) => this.#tell(error));
        eachFrame(this.#video, () => this.#isStopped, (time) => this.#render(time));
    }

    get canvas() {
        return this.#outer.canvas;
    }

    dispose() {
        if (this.#isStopped) return;
        this.#isStopped = true;
        for (const track of this.stream.getVideoTracks()) track.stop();
        this.#video.srcObject = null;
        this.#frames.dispose();
    }

    [disposal]() {
        this.dispose();
    }

    #fit(width, height) {
        for (const { canvas } of [this.#inner, this.#outer]) {
            if (canvas.width !== width || canvas.height !== height) Object.assign(canvas, { width, height });
        }
    }

    #render(seconds) {
        const { videoWidth: width, videoHeight: height } = this.#video;
        if (width === 0) return;
        this.#fit(width, height);
        this.#inner.drawImage(this.#video, 0, 0, width, height);
        try {
            const picture = this.#inner.getImageData(0, 0, width, height);
            this.#outer.putImageData(this.#frames.render(picture, { seconds }), 0, 0);
        } catch (error) {
            this.dispose();
            this.#tell(error);
        }
    }

    #tell(error) {
        if (this.#failed) this.#failed(error);
        else reportError(error);
    }
}
