// SPDX-License-Identifier: MIT

/** A new element: properties by name, attributes where the name holds a hyphen or is "role", listeners as "onclick". */
export function element(tag, properties = {}, ...children) {
    const made = document.createElement(tag);
    for (const [name, value] of Object.entries(properties)) {
        if (value === undefined) continue;
        if (name.includes('-') || name === 'role' || name === 'for') made.setAttribute(name, value);
        else made[name] = value;
    }
    made.append(...children.filter((child) => child !== null));
    return made;
}

/** A button that shows the icon of its class, named for those who do not see it. */
export function iconButton(icon, name) {
    return element('button', { type: 'button', className: `quiet icon ${icon}`, title: name, 'aria-label': name });
}

/** Saves bytes under a name, as a link's click does. */
export function download(name, bytes, type) {
    const url = URL.createObjectURL(new Blob([bytes], { type }));
    element('a', { href: url, download: name }).click();
    setTimeout(() => URL.revokeObjectURL(url), 60_000);
}
