// SPDX-License-Identifier: MIT
// A clip's sound on its way into an export: packets as they are where the container takes them, else encoded again.
import { AudioSampleSource, canEncodeAudio, EncodedAudioPacketSource, Quality } from './media.mjs';

const opusRate = 48000;
const quality = new Quality('high');
const codecNames = { opus: 'Opus', aac: 'AAC' };

/** What an encoder takes the sound as, or null where there is none. */
async function encodingOf({ channels, rate }, codecs) {
    for (const codec of codecs) {
        for (const [numberOfChannels, sampleRate] of [
            [channels, rate],
            [channels, opusRate],
            [Math.min(channels, 2), opusRate],
        ]) {
            if (await canEncodeAudio(codec, { numberOfChannels, sampleRate, quality })) {
                return { codec, quality, transform: { numberOfChannels, sampleRate } };
            }
        }
    }
    return null;
}

/** Sound that goes along with the frames of an export. */
export class Sound {
    #source;
    #pieces; // packets or samples, from `begin` on
    #begin;
    #next;
    #config;
    #earliest;

    /**
     * The sound of a clip from `begin` on for a format, { sound, note }: null where there is none, or none that the browser
     * can read; the note is a text's name and its words, or null.
     *   codecs   what it is encoded as, the best first
     */
    static async of(reader, format, codecs, begin) {
        const facts = await reader.sound();
        if (!facts) return { sound: null, note: null };
        if (format.getSupportedAudioCodecs().includes(facts.codec)) {
            const pieces = reader.soundPacketsFrom(begin);
            const source = new EncodedAudioPacketSource(facts.codec);
            // What an encoder needs before its first sound stands before the begin of the clip.
            const earliest = begin <= 0 && format.negativeTimestampSupport !== 'none' ? -Infinity : 0;
            const sound = new Sound(source, pieces, begin, { config: await reader.soundConfig(), earliest });
            return { sound, note: ['soundCopied'] };
        }
        const encoding = facts.canDecode ? await encodingOf(facts, codecs) : null;
        if (!encoding) return { sound: null, note: ['soundLost'] };
        const sound = new Sound(new AudioSampleSource(encoding), reader.soundSamplesFrom(begin), begin);
        return { sound, note: ['soundEncoded', { codec: codecNames[encoding.codec] }] };
    }

    constructor(source, pieces, begin, { config = null, earliest = 0 } = {}) {
        this.#source = source;
        this.#pieces = pieces;
        this.#begin = begin;
        this.#config = config;
        this.#earliest = earliest;
    }

    addTo(output) {
        output.addAudioTrack(this.#source);
    }

    /** Hands over what begins before a moment of the clip. */
    async upTo(time) {
        for (;;) {
            this.#next ??= await this.#pieces.next();
            if (this.#next.done || this.#next.value.timestamp >= time) return;
            const piece = this.#next.value;
            this.#next = null;
            await this.#add(piece);
        }
    }

    /** A piece that begins before the stretch is left out, at most a few hundredths of a second. */
    async #add(piece) {
        const time = piece.timestamp - this.#begin;
        const isWithin = time >= this.#earliest;
        if (this.#config) {
            const packet = piece.clone({ timestamp: time });
            if (isWithin) await this.#source.add(packet, { decoderConfig: this.#config });
            return;
        }
        try {
            if (!isWithin) return;
            piece.setTimestamp(time);
            await this.#source.add(piece);
        } finally {
            piece.close();
        }
    }

    /** Tells that no more comes, and gives back what was read ahead. */
    async end() {
        this.#source.close();
        await this.abandon();
    }

    async abandon() {
        this.#next?.value?.close?.();
        this.#next = { done: true };
        await this.#pieces.return();
    }
}
