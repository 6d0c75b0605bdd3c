// SPDX-License-Identifier: MIT
// The page's texts in the language that is spoken now.
import { filled, texts } from './texts.mjs';

/** Languages as they call themselves. */
export const languages = {
    en: 'English',
    fr: 'Français',
    de: 'Deutsch',
    ja: '日本語',
    es: 'Español',
    it: 'Italiano',
    ko: '한국어',
};

const names = Object.keys(texts);
let spoken = Object.values(texts).map((text) => text.slice(text.indexOf('=') + 1));

/** What the engine translates. */
export const allTexts = Object.values(texts);

/** Takes the translations of allTexts. */
export function speak(translations) {
    spoken = translations;
}

/** A text by its name in texts.mjs, with its words in braces filled in. */
export const say = (name, values) => filled(spoken[names.indexOf(name)], values);

/** The first language that the browser asks for and the page has. */
export function browserLanguage() {
    const asked = (navigator.languages ?? []).map((tag) => tag.slice(0, 2).toLowerCase());
    return asked.find((code) => code in languages) ?? 'en';
}
