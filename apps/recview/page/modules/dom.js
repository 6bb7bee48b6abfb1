// Makes elements; every text goes in as text.

/**
 * @param {string} tag @param {object} [properties] of the element; `aria` and `data` are objects of their own
 * @param {...(Node|string|(Node|string)[])} children
 */
export function element(tag, properties = {}, ...children) {
    const made = document.createElement(tag);
    const { aria = {}, data = {}, role, ...rest } = properties;
    Object.assign(made, rest);
    Object.assign(made.dataset, data);
    if (role !== undefined) {
        made.setAttribute('role', role);
    }
    for (const [name, value] of Object.entries(aria)) {
        made.setAttribute(`aria-${name}`, value);
    }
    made.append(...children.flat());
    return made;
}

/** A button; what it does in a few words is its title too. */
export function button(text, title, action) {
    const made = element('button', { type: 'button', title, textContent: text });
    made.addEventListener('click', action);
    return made;
}

/** A select with [value, text] choices. */
export function choice(label, choices, chosen, action) {
    const made = element('select', { title: label, aria: { label } });
    fill(made, choices, chosen);
    made.addEventListener('change', () => action(made.value));
    return made;
}

/** Gives a select other choices. */
export function fill(select, choices, chosen) {
    select.replaceChildren(...choices.map(([value, text]) => element('option', { value: String(value), textContent: text })));
    select.value = String(chosen);
}
