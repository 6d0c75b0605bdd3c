// SPDX-License-Identifier: MIT
// What the page hands over: the command, the settings file, FFmpeg's filter, the link.
import { commandText, ffmpegLacks, ffmpegText } from './commands.mjs';
import { download, element } from './dom.mjs';
import { say } from './language.mjs';

const kinds = ['command', 'settings', 'ffmpeg', 'link'];

export class TakeAlong {
    #root;
    #tell;
    #tabs;
    #output;
    #note;
    #state = null;
    #kind = 'command';

    /** `tell(text)` says what was done. */
    constructor(root, tell) {
        this.#root = root;
        this.#tell = tell;
        this.#output = root.querySelector('.output');
        this.#note = root.querySelector('.note');
        this.#tabs = kinds.map((kind) => {
            const tab = element('button', {
                type: 'button',
                role: 'tab',
                id: `tab-${kind}`,
                'aria-controls': 'take-along-output',
            });
            tab.onclick = () => this.#select(kind);
            tab.onkeydown = (event) => this.#key(event, kind);
            return tab;
        });
        root.querySelector('[role=tablist]').append(...this.#tabs);
        root.querySelector('.copy').onclick = () => this.#copy();
        root.querySelector('.download').onclick = () => {
            download('vireo-settings.json', this.#state.settings(), 'application/json');
            this.#tell(say('saved', { name: 'vireo-settings.json' }));
        };
    }

    /** { chain, settings(), clip, moment, input, output, link }: what to hand over. */
    show(state) {
        this.#state = state;
        this.#update();
    }

    #texts() {
        const { chain, settings, clip, moment, input, output, link } = this.#state;
        return {
            command: () => [commandText(chain, input, output), say('commandNote')],
            settings: () => [settings(), say('settingsNote')],
            ffmpeg: () => [
                ffmpegText(chain, clip, moment),
                ffmpegLacks(chain) ? say('ffmpegLacks') : say('ffmpegNote'),
            ],
            link: () => [link, say('linkNote')],
        };
    }

    #update() {
        const names = { command: say('command'), settings: say('settings'), ffmpeg: 'FFmpeg', link: say('link') };
        this.#tabs.forEach((tab, index) => {
            const isSelected = kinds[index] === this.#kind;
            tab.textContent = names[kinds[index]];
            tab.setAttribute('aria-selected', isSelected);
            tab.tabIndex = isSelected ? 0 : -1;
        });
        const isEmpty = this.#kind !== 'link' && !this.#state.chain.some((use) => use.isOn);
        const [text, note] = isEmpty ? ['', say('noFilters')] : this.#texts()[this.#kind]();
        this.#output.textContent = text;
        this.#output.setAttribute('aria-labelledby', `tab-${this.#kind}`);
        this.#note.textContent = note;
        this.#root.querySelector('.copy').disabled = isEmpty;
        this.#root.querySelector('.download').hidden = this.#kind !== 'settings';
        this.#root.querySelector('.download').disabled = isEmpty;
    }

    #select(kind) {
        this.#kind = kind;
        this.#update();
        this.#tabs[kinds.indexOf(kind)].focus();
    }

    #key(event, kind) {
        const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
        if (!step) return;
        event.preventDefault();
        this.#select(kinds[(kinds.indexOf(kind) + step + kinds.length) % kinds.length]);
    }

    async #copy() {
        try {
            await navigator.clipboard.writeText(this.#output.textContent);
            this.#tell(say('copied'));
        } catch {
            getSelection().selectAllChildren(this.#output);
            this.#tell(say('notCopied'));
        }
    }
}
