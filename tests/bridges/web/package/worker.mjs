// SPDX-License-Identifier: MIT
import { loadVireo } from 'vireo-filters';

const loading = loadVireo();
self.onmessage = async ({ data: { text, image } }) => self.postMessage((await loading).chain(text).render(image));
