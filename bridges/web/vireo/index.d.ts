// SPDX-License-Identifier: MIT
// Twenty-two classic video filters, in chains. What fails throws VireoError.

/**
 * Loads the filters. `source` is nothing (vireo.wasm beside this module), an address, the bytes of vireo.wasm, a
 * compiled WebAssembly.Module, or a Response or a promise of one.
 */
export function loadVireo(source?: string | object): Promise<Vireo>;

/** Module, filters and presets. */
export interface Vireo extends Disposable {
    /** "1.0.0" */
    readonly version: string;
    /** What it was built from. */
    readonly commit: string;
    /** Whose kernels run. */
    readonly instructionSet: string;

    /** Filters and parameters are named in this language from now on. */
    setLanguage(language: 'en' | 'fr' | 'de' | 'ja' | 'es' | 'it' | 'ko'): void;
    /** The text of a key such as "$$$/Page/Save=Save" in the language: the catalogue's, else what follows "=". */
    translate(key: string): string;

    filters(): readonly Filter[];
    /** The filter that goes by a display name, key, match name or id, or by the unambiguous beginning of one. */
    filter(name: string | number): Filter;
    presets(): { name: string; description: string }[];
    /** A chain of the filters that texts name, each as `vireo render -f` takes it, with ";" between several. */
    chain(...texts: string[]): Chain;
}

export interface Filter {
    /** Its place in filters(). */
    readonly index: number;
    readonly id: number;
    /** In the language, as the next ones with "english" are not. */
    readonly name: string;
    readonly englishName: string;
    readonly category: string;
    readonly englishCategory: string;
    readonly key: string;
    readonly matchName: string;
    readonly fileName: string;
    /** Whether its picture changes with the frame's number. */
    readonly readsTime: boolean;
    /** How many frames back it looks. */
    readonly earlierFrames: number;
    readonly depths: readonly Depth[];
    /** The largest frames that it takes, 2 ** 31 - 1 where any. */
    readonly maximumWidth: number;
    readonly maximumHeight: number;
    readonly maximumRowBytes: number;
    readonly parameters: readonly Parameter[];
}

export interface Parameter {
    readonly name: string;
    readonly englishName: string;
    /** As people read it beside a control. */
    readonly label: string;
    readonly kind: 'number' | 'boolean' | 'colour';
    /** What values may be, both ends included. */
    readonly minimum: number;
    readonly maximum: number;
    /** The same as people read it, in the unit. */
    readonly displayMinimum: number;
    readonly displayMaximum: number;
    readonly unit: string;
    /** Whether "40%" is a value. */
    readonly takesPercent: boolean;
    /** Of a fresh filter. Colours are 0xRRGGBB here and everywhere. */
    readonly default: number;
    /** Words that stand for the values from `minimum` on. */
    readonly choices: readonly string[];
    /** Bytes in the settings handle. */
    readonly size: number;
}

/** Filters one after another, with their settings. What adds to one adds whole or leaves it as it was. */
export interface Chain extends Disposable, Iterable<ChainFilter> {
    readonly length: number;
    /** The filter at a position, counted from the end where it is negative. */
    at(position: number): ChainFilter | undefined;

    add(text: string): this;
    /** Adds a filter as it is when fresh, by its name or its index. */
    addFilter(filter: string | number): this;
    addPreset(name: string): this;
    /** Adds what a settings file describes. Sentences call it by `shownName`. */
    addSettings(text: string, shownName?: string): this;
    /** Adds Levels as a Levels file sets it. */
    addLevels(content: Uint8Array, shownName?: string): this;
    remove(position: number): this;
    move(from: number, to: number): this;
    copy(): Chain;

    /** What add() reads as this chain. */
    text(spelling?: Spelling): string;
    toString(): string;
    /** The chain as a settings file. One that was added to an empty chain comes back letter for letter. */
    settings(): string;

    needs(): { earlierFrames: number; readsTime: boolean; depths: Depth[] };
    /** Throws where frames of this size and depth cannot be rendered. */
    check(shape: { width: number; height: number; depth?: Depth }, moment?: Moment): void;
    /** Whether every picture of a moment stays as it is. */
    isIdentity(moment?: Moment): boolean;

    /** The picture that the chain makes of another: `into`, or a new one, an ImageData where it was given one. */
    render<Result extends Picture>(picture: Picture, options: RenderOptions & { into: Result }): Result;
    render(picture: Picture, options: RenderOptions & { layout: Layout }): Picture;
    render<Source extends Picture>(picture: Source, options?: RenderOptions): Rendered<Source>;

    /**
     * Renders frames in order, and keeps those that the chain looks back at: `for (const frame of chain.stream(frames))`,
     * or `for await` where frames come later. Moment and options are those of the first frame.
     */
    stream<Source extends Picture>(pictures: Iterable<Source>, options?: StreamOptions): Generator<Rendered<Source>, void>;
    stream<Source extends Picture>(
        pictures: AsyncIterable<Source>,
        options?: StreamOptions,
    ): AsyncGenerator<Rendered<Source>, void>;
    /** The same for a script that has no loop of its own. */
    startStream(options?: StreamOptions): Stream;

    /** In pages: the chain over a stream of the browser, such as a camera's, while it runs. */
    live(stream: MediaStreamOfPage, options?: LiveOptions): Live;
}

/** The filter at a position of a chain. A parameter goes by its name, as texts take it, or its index; "from", "to" and
 * "mix" belong to every filter. */
export interface ChainFilter {
    readonly position: number;
    readonly filter: Filter;

    /** The value as texts have it, key frames too; empty for "from" and "to" that were not given. */
    get(parameter: string | number): string;
    /** Takes a number in stored units, or a text such as "60%", "#ff8000" or "0@0s..254@5s". */
    set(parameter: string | number, value: number | boolean | string): this;
    unset(parameter: string | number): this;
    isSet(parameter: string | number): boolean;
    /** The number at a moment. */
    value(parameter: string | number, moment?: Moment): number;
    isKeyed(parameter: string | number): boolean;
    /** The key frames, none of a constant. */
    keys(parameter: string | number): Key[];
    setKeys(parameter: string | number, keys: readonly Key[]): this;
    /** Whether the filter works at a moment, as its "from" and "to" say. */
    covers(moment?: Moment): boolean;

    text(spelling?: Spelling): string;
    toString(): string;
    /** The settings handle, as projects keep it. */
    bytes(moment?: Moment): Uint8Array;
    setBytes(bytes: Uint8Array): this;
    /** The Levels file of a Levels. */
    levels(moment?: Moment): Uint8Array;
}

/** Frames that come in order. A number that does not follow, or another size, begins anew. */
export interface Stream extends Disposable {
    render<Result extends Picture>(picture: Picture, options: StreamOptions & { into: Result }): Result;
    render(picture: Picture, options: StreamOptions & { layout: Layout }): Picture;
    render<Source extends Picture>(picture: Source, options?: StreamOptions): Rendered<Source>;
    /** Forgets the frames before, and counts from the first one again. */
    restart(): void;
}

/** A stream that goes through a chain, which may be changed meanwhile. It ends with its source, or when disposed of. */
export interface Live extends Disposable {
    /** The filtered picture, with the source's sound: for a video element, a recorder or a connection to others. */
    readonly stream: MediaStreamOfPage;
    /** Shows the same picture. */
    readonly canvas: CanvasOfPage;
}

export interface LiveOptions {
    /** Frames a second, by which key frames in frames count; 30 unless given. */
    rate?: number;
    /** Hears why it ended, where a frame could not be rendered. Otherwise the page's "error" event does. */
    onError?: (error: unknown) => void;
}

/** MediaStream and HTMLCanvasElement, where the declarations of pages are in use. */
export type MediaStreamOfPage = typeof globalThis extends { MediaStream: { prototype: infer Stream } } ? Stream : unknown;
export type CanvasOfPage = typeof globalThis extends { HTMLCanvasElement: { prototype: infer Canvas } } ? Canvas : unknown;

export type Key = ({ frame: number; seconds?: undefined } | { frame?: undefined; seconds: number }) & {
    value: number;
    /** To the next key; "linear" unless given. */
    transition?: 'linear' | 'hold' | 'smooth';
};

/** "full": `Black & White:mix=50%`; "compact": `BlackAndWhite:mix=50`, without what addresses would escape. */
export type Spelling = 'full' | 'compact';

export type Depth = 8 | 16 | 32;

/** Channels in the order in memory; x means nothing: read as opaque, written as full. */
export type Layout =
    'bgra' | 'rgba' | 'argb' | 'abgr' | 'bgrx' | 'rgbx' | 'xrgb' | 'xbgr' | 'bgr' | 'rgb' | 'grey';

export type Samples = Uint8ClampedArray | Uint8Array | Uint16Array | Float32Array;

/** Rows from the top, without gaps. An ImageData is one. */
export interface Picture {
    readonly width: number;
    readonly height: number;
    /** 0 to 255, 0 to 65535, or 0 to 1. */
    readonly data: Samples;
    /** Else "rgba", "rgb" or "grey", as there are samples. */
    readonly layout?: Layout;
    /** Whether colours are multiplied by alpha; they are not unless given. */
    readonly premultiplied?: boolean;
}

export interface Moment {
    /** From 0. */
    frame?: number;
    /** Of the whole clip; 0 where unknown. */
    frames?: number;
    /** Frames a second; 25 unless given. */
    rate?: number;
    /** From the first frame, where that is not frame / rate. */
    seconds?: number;
    /** Or which field comes first. */
    interlacing?: 'progressive' | 'top' | 'bottom';
}

export interface StreamOptions extends Moment {
    /** Of the result; the source's unless given. */
    layout?: Layout;
    /** Takes the result. It may be the source. */
    into?: Picture;
}

export interface RenderOptions extends StreamOptions {
    /**
     * The chain's input at an earlier frame, alike to the picture; `seconds` is where it stands in the clip if not at
     * its number. Without it filters that look back see the picture itself.
     */
    earlier?: (frame: number) => Picture & { readonly seconds?: number };
    /** Asked between filters and parts of a frame. */
    isCancelled?: () => boolean;
}

type SamplesOf<Data> = Data extends Uint8ClampedArray
    ? Uint8ClampedArray
    : Data extends Uint8Array
    ? Uint8Array
    : Data extends Uint16Array
    ? Uint16Array
    : Float32Array;

/** A picture of a script's own. */
export interface PlainPicture<Data extends Samples> extends Picture {
    readonly data: Data;
    readonly layout: Layout;
    readonly premultiplied: boolean;
}

/** An ImageData of an ImageData, else a picture with samples like the source's. */
export type Rendered<Source extends Picture> = typeof globalThis extends { ImageData: { prototype: infer Image } }
    ? Source extends Image
        ? Image
        : PlainPicture<SamplesOf<Source['data']>>
    : PlainPicture<SamplesOf<Source['data']>>;

/** Why something failed, in one sentence, the one that the command line prints. */
export class VireoError extends Error {
    readonly status:
        | 'failed'
        | 'usage'
        | 'noMemory'
        | 'noModule'
        | 'unknownFilter'
        | 'unknownParameter'
        | 'badValue'
        | 'badText'
        | 'badSettings'
        | 'unknownPreset'
        | 'tooLarge'
        | 'unsupported'
        | 'noFrame'
        | 'cancelled';
    /** Where in the text that was given; -1 for nowhere. */
    readonly offset: number;
    /** What the sentence is about; empty where it is not about one. */
    readonly filter: string;
    readonly parameter: string;
    readonly value: string;
}

/** Something that holds memory until it is disposed of, by `using` too. What is forgotten goes sooner or later. */
interface Disposable {
    dispose(): void;
    [Symbol.dispose](): void;
}

declare global {
    interface SymbolConstructor {
        readonly dispose: unique symbol;
    }
}

export {};
